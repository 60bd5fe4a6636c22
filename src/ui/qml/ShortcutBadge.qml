// The global shortcut's signs. The Mac's are drawn by us, since few fonts have them all. Spoken in words, unless its
// parent speaks for it.
import QtQuick
import orvo.settings

RoundedRectangle {
    property bool spoken: true
    readonly property var drawings: ({
            "⌃": "control",
            "⌥": "option",
            "⌘": "command"
        })

    borderColor: Theme.divider
    color: Theme.badge
    implicitHeight: 24
    implicitWidth: signs.implicitWidth + 18
    radius: 6
    Accessible.ignored: !spoken
    Accessible.name: View.texts.shortcut
    Accessible.role: Accessible.StaticText

    Row {
        id: signs

        anchors.centerIn: parent
        spacing: 5

        Repeater {
            model: View.texts.shortcutSigns.split(" ")

            Item {
                required property string modelData
                readonly property string drawing: drawings[modelData] ?? ""

                anchors.verticalCenter: parent.verticalCenter
                implicitHeight: 16
                implicitWidth: drawing !== "" ? symbol.width : sign.implicitWidth

                Symbol {
                    id: symbol

                    anchors.centerIn: parent
                    color: Theme.secondary
                    name: drawing
                    size: 12
                    weight: 1.2
                }
                DetailText {
                    id: sign

                    anchors.centerIn: parent
                    font.weight: Font.Medium
                    spoken: false
                    text: modelData
                    visible: drawing === ""
                }
            }
        }
    }
}
