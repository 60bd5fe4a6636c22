// One system detail: its title, a mark where it can be ready or not, and its value. Read as one element.
import QtQuick
import QtQuick.Layouts
import orvo.settings

RowLayout {
    required property var row

    spacing: 6
    Accessible.name: row.title + ": " + row.value
    Accessible.role: Accessible.StaticText

    BodyText {
        Layout.alignment: Qt.AlignBaseline
        Layout.fillWidth: true
        color: Theme.secondary
        spoken: false
        text: row.title
    }
    Symbol {
        color: row.ready ? Theme.orvoAccent : Theme.secondary
        name: row.ready ? "checkmark.circle.fill" : "circle"
        size: 14
        visible: row.marked
        weight: 1.2
    }
    SelectableText {
        Layout.alignment: Qt.AlignBaseline
        Layout.maximumWidth: parent.width * 0.6
        horizontalAlignment: TextEdit.AlignRight
        text: row.value
        wrapMode: TextEdit.Wrap
        Accessible.ignored: true
    }
}
