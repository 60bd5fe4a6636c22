// What the page has to tell, to be read and copied. Spoken when it comes.
import QtQuick
import orvo.settings

Item {
    implicitHeight: visible ? text.implicitHeight : 0
    visible: View.message !== ""

    Symbol {
        anchors.left: parent.left
        // Its circle keeps a pixel to its place's edge.
        anchors.leftMargin: -1
        anchors.top: parent.top
        anchors.topMargin: 1
        color: Theme.secondary
        name: "info.circle"
        size: 15
        weight: 1.2
    }
    SelectableText {
        id: text

        activeFocusOnTab: true
        anchors.left: parent.left
        anchors.leftMargin: 21
        anchors.right: parent.right
        color: Theme.secondary
        font.pixelSize: Theme.smallSize
        text: View.message
        wrapMode: TextEdit.Wrap
        Accessible.name: View.message
        Accessible.readOnly: true
        Accessible.role: Accessible.Notification
        Accessible.selectableText: true
    }
}
