// The page's one accent-filled button: a label before its symbol, or the symbol alone.
import QtQuick
import orvo.settings

PlainButton {
    id: button

    required property string symbol

    font.weight: Font.DemiBold
    leftPadding: 18
    rightPadding: text === "" ? 18 : 14
    topPadding: 9
    bottomPadding: 9
    ringRadius: 11
    opacity: enabled ? 1 : 0.45

    background: Panel {
        color: button.down ? Theme.accentFillPressed : button.hovered ? Theme.accentFillHover : Theme.accentFill
        radius: 8
    }
    contentItem: Row {
        spacing: 5

        BodyText {
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.onAccent
            font: button.font
            spoken: false
            text: button.text
            visible: text !== ""
        }
        Symbol {
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.onAccent
            name: button.symbol
            size: 16
            weight: 2
            width: button.text === "" ? 24 : size
        }
    }
}
