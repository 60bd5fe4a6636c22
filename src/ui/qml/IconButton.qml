// A borderless button that is only a symbol.
import QtQuick
import orvo.settings

PlainButton {
    id: button

    required property string symbol

    toolTip: name

    background: RoundedRectangle {
        color: button.down ? Theme.pressed : button.lit ? Theme.hover : "transparent"
        radius: 6
    }
    contentItem: Symbol {
        color: Theme.secondary
        name: button.symbol
        size: 15
    }
}
