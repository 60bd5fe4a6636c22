// A setting's title above what it does. Its control says both.
import QtQuick
import QtQuick.Layouts
import orvo.settings

ColumnLayout {
    required property string title
    required property string detail

    Layout.fillWidth: true
    spacing: 1

    BodyText {
        Layout.fillWidth: true
        spoken: false
        font.weight: Theme.titleWeight
        text: parent.title
        wrapMode: Text.Wrap
    }
    BodyText {
        Layout.fillWidth: true
        color: Theme.secondary
        font.pixelSize: Theme.smallSize
        spoken: false
        text: parent.detail
        wrapMode: Text.Wrap
    }
}
