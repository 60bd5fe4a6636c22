// A titled card whose items stand below one another.
import QtQuick
import orvo.settings

Column {
    id: section

    required property string title
    default property alias items: column.data

    spacing: 8
    width: parent.width
    Accessible.name: title
    Accessible.role: Accessible.Grouping

    DetailText {
        font.letterSpacing: 0.6
        font.pixelSize: Theme.captionSize
        font.weight: Font.DemiBold
        spoken: false
        text: section.title
    }
    RoundedRectangle {
        borderColor: Theme.outline
        color: Theme.card
        implicitHeight: column.implicitHeight + 28
        radius: 10
        width: parent.width

        Column {
            id: column

            anchors.left: parent.left
            anchors.margins: 16
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            spacing: 13
        }
    }
}
