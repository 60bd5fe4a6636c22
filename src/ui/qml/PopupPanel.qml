// A small panel over the page, and the shadow that it throws: soft, and a little below it.
import QtQuick
import orvo.settings

RoundedRectangle {
    id: panel

    borderColor: Theme.controlOutline
    color: Theme.popup

    Repeater {
        model: 7

        RoundedRectangle {
            required property int index

            anchors.bottomMargin: -index - 2
            anchors.fill: panel
            anchors.leftMargin: -index
            anchors.rightMargin: -index
            anchors.topMargin: 2 - index
            color: Theme.shadow
            radius: panel.radius + index
            z: -1
        }
    }
}
