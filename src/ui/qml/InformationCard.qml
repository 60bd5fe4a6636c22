// A symbol beside a title and a detail, on a softly filled card.
import QtQuick
import orvo.settings

RoundedRectangle {
    required property var card
    // Room for what stands at the end.
    property real trailing: 0

    borderColor: Theme.divider
    color: Theme.fill
    implicitHeight: texts.implicitHeight + 28
    radius: 10

    Symbol {
        anchors.left: parent.left
        anchors.leftMargin: 15
        anchors.top: texts.top
        anchors.topMargin: -1
        color: parent.card.attention ? Theme.attention : Theme.orvoAccent
        name: parent.card.symbol
        size: 20
        weight: 1.5
    }
    Column {
        id: texts

        anchors.left: parent.left
        anchors.leftMargin: 48
        anchors.right: parent.right
        anchors.rightMargin: 16 + parent.trailing
        anchors.verticalCenter: parent.verticalCenter
        spacing: 3

        BodyText {
            font.weight: Font.DemiBold
            text: card.title
            width: parent.width
            wrapMode: Text.Wrap
        }
        DetailText {
            text: card.detail
            width: parent.width
            wrapMode: Text.Wrap
        }
    }
}
