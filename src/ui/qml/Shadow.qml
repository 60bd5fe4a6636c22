// What a small panel over the page throws: soft, and a little below it.
import QtQuick
import orvo.settings

Item {
    id: shadow

    required property real radius

    Repeater {
        model: 7

        RoundedRectangle {
            required property int index

            anchors.bottomMargin: -index - 2
            anchors.fill: shadow
            anchors.leftMargin: -index
            anchors.rightMargin: -index
            anchors.topMargin: 2 - index
            color: Theme.shadow
            radius: shadow.radius + index
        }
    }
}
