// A setting's title above what it does.
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
        font.weight: Font.Medium
        text: parent.title
        wrapMode: Text.Wrap
    }
    BodyText {
        Layout.fillWidth: true
        color: Theme.secondary
        font.pixelSize: Theme.smallSize
        text: parent.detail
        wrapMode: Text.Wrap
    }
}
