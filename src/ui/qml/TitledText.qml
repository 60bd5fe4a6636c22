// A title above what there is to say of it. Where it stands beside a control, that says both.
import QtQuick
import QtQuick.Layouts
import orvo.settings

ColumnLayout {
    property alias title: heading.text
    property alias detail: words.text
    property alias weight: heading.font.weight
    property bool spoken: true

    Layout.fillWidth: true
    spacing: 1

    BodyText {
        id: heading

        Layout.fillWidth: true
        font.weight: Theme.titleWeight
        spoken: parent.spoken
        wrapMode: Text.Wrap
    }
    DetailText {
        id: words

        Layout.fillWidth: true
        spoken: parent.spoken
        wrapMode: Text.Wrap
    }
}
