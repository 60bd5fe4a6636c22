// The global shortcut in signs, spoken in words.
import QtQuick
import orvo.settings

Panel {
    borderColor: Theme.divider
    color: Theme.badge
    implicitHeight: 24
    implicitWidth: signs.implicitWidth + 18
    radius: 6
    Accessible.name: "Control Option Command B"
    Accessible.role: Accessible.StaticText

    BodyText {
        id: signs

        anchors.centerIn: parent
        color: Theme.secondary
        font.pixelSize: Theme.smallSize
        font.weight: Font.Medium
        spoken: false
        text: "⌃ ⌥ ⌘ B"
    }
}
