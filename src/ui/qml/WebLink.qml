// A link to an address or a document.
import QtQuick
import orvo.settings

Item {
    id: link

    required property string text
    signal clicked

    activeFocusOnTab: true
    implicitHeight: row.implicitHeight
    implicitWidth: row.implicitWidth
    Accessible.name: text
    Accessible.onPressAction: clicked()
    Accessible.role: Accessible.Link
    Keys.onEnterPressed: clicked()
    Keys.onReturnPressed: clicked()
    Keys.onSpacePressed: clicked()

    Row {
        id: row

        spacing: 3

        BodyText {
            color: Theme.accentText
            font.pixelSize: Theme.smallSize
            font.underline: hover.hovered
            spoken: false
            text: link.text
        }
        Symbol {
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.accentText
            name: "arrow.up.right"
            size: 11
            weight: 1.2
        }
    }
    HoverHandler {
        id: hover

        cursorShape: Qt.PointingHandCursor
    }
    TapHandler {
        onTapped: link.clicked()
    }
    FocusRing {
        target: link
    }
}
