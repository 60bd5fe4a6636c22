// A link that opens in the default browser.
import QtQuick
import orvo.settings

PlainButton {
    id: link

    font.pixelSize: Theme.smallSize
    Accessible.role: Accessible.Link

    contentItem: Row {
        spacing: 3

        BodyText {
            color: Theme.accentText
            font.pixelSize: link.font.pixelSize
            font.underline: link.hovered
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
        cursorShape: Qt.PointingHandCursor
    }
}
