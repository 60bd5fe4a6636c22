// One option of an open picker.
import QtQuick
import QtQuick.Templates as T
import orvo.settings

T.ItemDelegate {
    id: option

    required property bool chosen

    font.pixelSize: Theme.bodySize
    hoverEnabled: true
    implicitHeight: 27
    Accessible.checkable: true
    Accessible.checked: chosen
    Accessible.focusable: true
    Accessible.name: text
    Accessible.onPressAction: clicked()
    Accessible.selectable: true
    Accessible.selected: chosen

    background: Panel {
        color: option.highlighted ? Theme.accentFill : "transparent"
        radius: 5
    }
    contentItem: Item {
        Symbol {
            anchors.left: parent.left
            anchors.leftMargin: 5
            anchors.verticalCenter: parent.verticalCenter
            color: option.highlighted ? Theme.accentContrast : Theme.text
            name: "checkmark"
            size: 13
            visible: option.chosen
            weight: 1.7
        }
        BodyText {
            anchors.left: parent.left
            anchors.leftMargin: 22
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            color: option.highlighted ? Theme.accentContrast : Theme.text
            elide: Text.ElideRight
            spoken: false
            text: option.text
        }
    }
}
