// One page's button in the column.
import QtQuick
import orvo.settings

PlainButton {
    id: item

    required property bool selected
    required property string symbol

    bottomPadding: 7
    leftPadding: 8
    rightPadding: 8
    ringRadius: 9
    topPadding: 7
    Accessible.selectable: true
    Accessible.selected: selected

    background: RoundedRectangle {
        color: item.selected ? Theme.selection : item.down ? Theme.pressed : item.hovered ? Theme.hover : "transparent"
        radius: 7
    }
    contentItem: Row {
        spacing: 8

        Symbol {
            anchors.verticalCenter: parent.verticalCenter
            color: item.selected ? Theme.accentText : Theme.text
            name: item.symbol
            size: 16
            width: 20
        }
        BodyText {
            anchors.verticalCenter: parent.verticalCenter
            color: item.selected ? Theme.accentText : Theme.text
            font.weight: item.selected ? Font.DemiBold : Font.Normal
            spoken: false
            text: item.text
        }
    }
}
