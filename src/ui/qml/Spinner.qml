// Something is under way; stands still where the desktop asks for no movement.
import QtQuick
import orvo.settings

Item {
    id: spinner

    readonly property int dots: 8
    property int phase: 0

    implicitHeight: 14
    implicitWidth: 14

    Repeater {
        model: spinner.dots

        RoundedRectangle {
            required property int index
            readonly property real angle: 2 * Math.PI * index / spinner.dots

            color: Theme.secondary
            height: spinner.height * 0.2
            opacity: 0.2 + 0.8 * ((index + spinner.dots - spinner.phase) % spinner.dots) / (spinner.dots - 1)
            radius: height / 2
            width: height
            x: (spinner.width - width) / 2 * (1 + Math.sin(angle))
            y: (spinner.height - height) / 2 * (1 - Math.cos(angle))
        }
    }
    Timer {
        interval: 90
        repeat: true
        running: spinner.visible && Theme.movement > 0
        onTriggered: spinner.phase = (spinner.phase + spinner.dots - 1) % spinner.dots
    }
}
