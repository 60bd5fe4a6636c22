// What stands where rows would: why there are none and what helps.
import QtQuick
import orvo.settings

Item {
    signal clearSearch

    implicitHeight: column.implicitHeight + 20

    Column {
        id: column

        anchors.centerIn: parent
        spacing: 5
        width: Math.min(330, parent.width - 40)

        Symbol {
            anchors.horizontalCenter: parent.horizontalCenter
            color: Theme.secondary
            name: View.emptyState.symbol
            size: 34
            weight: 1.3
        }
        Item {
            height: 5
            width: 1
        }
        BodyText {
            font.weight: Font.DemiBold
            horizontalAlignment: Text.AlignHCenter
            text: View.emptyState.title
            width: parent.width
            wrapMode: Text.Wrap
        }
        DetailText {
            horizontalAlignment: Text.AlignHCenter
            text: View.emptyState.detail
            width: parent.width
            wrapMode: Text.Wrap
        }
        Item {
            height: 7
            visible: clear.visible
            width: 1
        }
        PushButton {
            id: clear

            anchors.horizontalCenter: parent.horizontalCenter
            text: View.texts.clearSearch
            visible: View.emptyState.offersClearSearch
            onClicked: clearSearch()
        }
    }
}
