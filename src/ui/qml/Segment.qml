// One segment of a picker. It shows whether it is chosen and only asks for a change.
import QtQuick
import orvo.settings

BodyText {
    id: segment

    required property bool chosen
    required property color chosenColor
    readonly property bool lit: hover.hovered && enabled
    signal picked

    color: chosen ? chosenColor : lit ? Theme.text : Theme.secondary
    focus: chosen
    font.pixelSize: Theme.smallSize
    font.weight: chosen ? Font.DemiBold : Font.Normal
    horizontalAlignment: Text.AlignHCenter
    verticalAlignment: Text.AlignVCenter
    Accessible.checkable: true
    Accessible.checked: chosen
    Accessible.focusable: true
    Accessible.onPressAction: if (enabled)
        picked()
    Accessible.onToggleAction: if (enabled)
        picked()
    Accessible.role: Accessible.RadioButton
    Keys.onEnterPressed: picked()
    Keys.onReturnPressed: picked()
    Keys.onSpacePressed: picked()

    RoundedRectangle {
        anchors.fill: parent
        anchors.margins: 2
        color: segment.chosen ? "transparent" : tap.pressed ? Theme.pressed : segment.lit ? Theme.hover : "transparent"
        radius: 5.5
        z: -1
    }
    HoverHandler {
        id: hover
    }
    TapHandler {
        id: tap

        onTapped: segment.picked()
    }
    FocusRing {
        radius: 8
        target: segment
    }
}
