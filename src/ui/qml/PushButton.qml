// A bordered button with a label, a symbol before it, or both.
import QtQuick
import orvo.settings

PlainButton {
    id: button

    property string symbol

    leftPadding: 13
    rightPadding: 13
    topPadding: 6
    bottomPadding: 6
    ringRadius: 9

    background: Panel {
        borderColor: Theme.controlOutline
        color: Theme.control
        radius: 6.5

        Panel {
            anchors.fill: parent
            color: button.down ? Theme.pressed : button.hovered ? Theme.hover : "transparent"
            radius: parent.radius
        }
    }
    contentItem: Row {
        spacing: 6

        Symbol {
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.text
            name: button.symbol
            size: 14
            visible: name !== ""
        }
        BodyText {
            anchors.verticalCenter: parent.verticalCenter
            font: button.font
            spoken: false
            text: button.text
        }
    }
}
