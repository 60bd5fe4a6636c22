// A bordered button with a label, a symbol before it, or both.
import QtQuick
import orvo.settings

PlainButton {
    id: button

    property string symbol
    // What to press next.
    property bool prominent: false
    readonly property color textColor: prominent && enabled ? Theme.accentContrast : Theme.text

    leftPadding: 13
    rightPadding: 13
    topPadding: 6
    bottomPadding: 6
    ringRadius: 9

    background: ControlPanel {
        borderColor: button.prominent ? "transparent" : Theme.controlOutline
        color: !button.prominent ? Theme.control : !button.enabled ? Theme.quietButton : button.down ? Theme.accentFillPressed : button.lit ? Theme.accentFillHover : Theme.accentFill
        down: button.down && !button.prominent
        hovered: button.lit && !button.prominent
    }
    contentItem: Row {
        spacing: 6

        Symbol {
            anchors.verticalCenter: parent.verticalCenter
            color: button.textColor
            name: button.symbol
            size: 14
            visible: name !== ""
        }
        BodyText {
            anchors.verticalCenter: parent.verticalCenter
            color: button.textColor
            font: button.font
            spoken: false
            text: button.text
        }
    }
}
