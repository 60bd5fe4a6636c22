// "Keep" or "Hide": two segments, one chosen. It shows what it is given and only asks for a change.
import QtQuick
import orvo.settings

FocusScope {
    id: picker

    required property bool hide
    required property string label
    signal chosen(bool hide)

    implicitHeight: 26
    opacity: enabled ? 1 : Theme.disabled
    Accessible.name: label
    Accessible.role: Accessible.Grouping
    Keys.onLeftPressed: chosen(false)
    Keys.onRightPressed: chosen(true)

    RoundedRectangle {
        anchors.fill: parent
        color: Theme.track
        radius: 7
    }
    RoundedRectangle {
        borderColor: picker.hide ? "transparent" : Theme.controlOutline
        color: picker.hide ? Theme.accentFill : Theme.thumb
        height: parent.height - 4
        radius: 5.5
        width: parent.width / 2 - 3
        x: picker.hide ? parent.width - width - 2 : 2
        y: 2

        // A row that comes to show another application is there at once.
        Behavior on x {
            enabled: picker.activeFocus

            NumberAnimation {
                duration: Theme.movement
                easing.type: Easing.OutCubic
            }
        }
    }
    Row {
        anchors.fill: parent

        Repeater {
            model: [View.texts.keep, View.texts.hide]

            Segment {
                required property int index
                required property string modelData

                chosen: picker.hide === (index === 1)
                chosenColor: picker.hide ? Theme.accentContrast : Theme.text
                height: parent.height
                text: modelData
                width: parent.width / 2
                onPicked: {
                    forceActiveFocus(Qt.MouseFocusReason);
                    picker.chosen(index === 1);
                }
            }
        }
    }
}
