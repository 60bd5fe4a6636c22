// The global shortcut, "⌃ ⌥ ⌘ B", in signs drawn by us, since few fonts have them all. Spoken in words.
import QtQuick
import orvo.settings

Panel {
    borderColor: Theme.divider
    color: Theme.badge
    implicitHeight: 24
    implicitWidth: signs.implicitWidth + 18
    radius: 6
    Accessible.name: View.texts.shortcut
    Accessible.role: Accessible.StaticText

    Row {
        id: signs

        anchors.centerIn: parent
        spacing: 5

        Repeater {
            model: ["control", "option", "command"]

            Symbol {
                required property string modelData

                anchors.verticalCenter: parent.verticalCenter
                color: Theme.secondary
                name: modelData
                size: 12
                weight: 1.2
            }
        }
        BodyText {
            color: Theme.secondary
            font.pixelSize: Theme.smallSize
            font.weight: Font.Medium
            spoken: false
            text: "B"
        }
    }
}
