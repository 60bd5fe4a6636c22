// The bordered ground of a button or a picker.
import QtQuick
import orvo.settings

RoundedRectangle {
    id: panel

    property bool down: false
    property bool hovered: false

    borderColor: Theme.controlOutline
    color: Theme.control
    radius: 6.5

    RoundedRectangle {
        anchors.fill: parent
        color: panel.down ? Theme.pressed : panel.hovered ? Theme.hover : "transparent"
        radius: parent.radius
    }
}
