// The column on the left: whose window this is, the pages, and two lines on how things stand.
import QtQuick
import orvo.settings

Rectangle {
    property real titleBarHeight: 0

    function takeFocus() {
        items.itemAt(View.page).forceActiveFocus(Qt.OtherFocusReason);
    }

    color: Theme.column

    Row {
        id: header

        anchors.left: parent.left
        anchors.leftMargin: 16
        anchors.top: parent.top
        anchors.topMargin: 22 + parent.titleBarHeight
        spacing: 10

        OrvoIcon {
            size: 38
        }
        Column {
            anchors.verticalCenter: parent.verticalCenter
            spacing: 1

            BodyText {
                font.weight: Font.DemiBold
                text: View.texts.name
            }
            DetailText {
                font.pixelSize: Theme.captionSize
                text: View.texts.tagline
            }
        }
    }
    Column {
        anchors.left: parent.left
        anchors.margins: 10
        anchors.right: parent.right
        anchors.top: header.bottom
        anchors.topMargin: 24
        spacing: 3

        Repeater {
            id: items

            model: View.pages

            NavigationItem {
                required property int index
                required property var modelData

                selected: View.page === index
                symbol: modelData.symbol
                text: modelData.text
                width: parent.width
                KeyNavigation.down: items.count > index + 1 ? items.itemAt(index + 1) : null
                KeyNavigation.up: index > 0 ? items.itemAt(index - 1) : null
                onClicked: View.perform("page", index)
            }
        }
    }
    Column {
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 18
        anchors.left: parent.left
        anchors.leftMargin: 18
        spacing: 5

        Row {
            spacing: 6

            Symbol {
                anchors.verticalCenter: parent.verticalCenter
                color: Theme.secondary
                name: View.statusLine.symbol
                size: 13
                weight: 1.2
            }
            DetailText {
                font.pixelSize: Theme.captionSize
                text: View.statusLine.text
            }
        }
        BodyText {
            color: Theme.tertiary
            font.pixelSize: Theme.captionSize
            text: View.texts.versionLine
        }
    }
}
