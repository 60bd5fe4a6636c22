// The page's one accent-filled button: a label before its symbol, or the symbol alone.
import QtQuick
import orvo.settings

PlainButton {
    id: button

    required property string symbol
    readonly property color textColor: enabled ? Theme.accentContrast : Theme.text

    font.weight: Font.DemiBold
    implicitHeight: 36
    leftPadding: 18
    rightPadding: text === "" ? 18 : 14
    ringRadius: 11

    background: RoundedRectangle {
        color: !button.enabled ? Theme.quietButton : button.down ? Theme.accentFillPressed : button.lit ? Theme.accentFillHover : Theme.accentFill
        radius: 8
    }
    contentItem: Row {
        spacing: 5

        BodyText {
            anchors.verticalCenter: parent.verticalCenter
            color: button.textColor
            font: button.font
            spoken: false
            text: button.text
            visible: text !== ""
        }
        Symbol {
            anchors.verticalCenter: parent.verticalCenter
            color: button.textColor
            name: button.symbol
            size: 16
            weight: 2
            width: button.text === "" ? 24 : size
        }
    }
}
