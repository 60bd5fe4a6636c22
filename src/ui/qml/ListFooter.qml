// How many applications are shown, and what a choice covers.
import QtQuick
import orvo.settings

Item {
    implicitHeight: 33

    Divider {
        width: parent.width
    }
    DetailText {
        id: count

        anchors.left: parent.left
        anchors.leftMargin: 15
        anchors.verticalCenter: parent.verticalCenter
        font.pixelSize: Theme.captionSize
        text: View.listCount
    }
    DetailText {
        anchors.left: count.right
        anchors.leftMargin: 15
        anchors.right: parent.right
        anchors.rightMargin: 15
        anchors.verticalCenter: parent.verticalCenter
        elide: Text.ElideRight
        font.pixelSize: Theme.captionSize
        horizontalAlignment: Text.AlignRight
        text: View.texts.choicesNote
    }
}
