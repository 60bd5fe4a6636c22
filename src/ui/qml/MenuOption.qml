// One option of an open picker.
import QtQuick
import orvo.settings

Item {
    id: option

    required property bool chosen
    required property bool highlighted
    required property string text
    signal entered
    signal picked

    implicitHeight: 27
    Accessible.checkable: true
    Accessible.checked: chosen
    Accessible.focusable: true
    Accessible.name: text
    Accessible.onPressAction: picked()
    Accessible.role: Accessible.ListItem
    Accessible.selectable: true
    Accessible.selected: chosen
    Keys.onEnterPressed: picked()
    Keys.onReturnPressed: picked()
    Keys.onSpacePressed: picked()

    RoundedRectangle {
        anchors.fill: parent
        color: !option.highlighted ? "transparent" : tap.pressed ? Theme.accentFillPressed : Theme.accentFill
        radius: 5
    }
    Symbol {
        anchors.left: parent.left
        anchors.leftMargin: 5
        anchors.verticalCenter: parent.verticalCenter
        color: option.highlighted ? Theme.accentContrast : Theme.text
        name: "checkmark"
        size: 13
        visible: option.chosen
        weight: 1.7
    }
    BodyText {
        anchors.left: parent.left
        anchors.leftMargin: 22
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        color: option.highlighted ? Theme.accentContrast : Theme.text
        elide: Text.ElideRight
        spoken: false
        text: option.text
    }
    HoverHandler {
        onHoveredChanged: if (hovered)
            option.entered()
    }
    TapHandler {
        id: tap

        onTapped: option.picked()
    }
}
