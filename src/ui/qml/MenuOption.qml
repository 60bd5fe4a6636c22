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
    Accessible.name: text
    Accessible.onPressAction: clicked()

    background: Panel {
        color: option.highlighted ? Theme.accentFill : "transparent"
        radius: 5
    }
    contentItem: Item {
        Symbol {
            anchors.left: parent.left
            anchors.leftMargin: 7
            anchors.verticalCenter: parent.verticalCenter
            color: option.highlighted ? Theme.accentContrast : Theme.text
            name: "checkmark"
            size: 13
            visible: option.chosen
            weight: 1.7
        }
        BodyText {
            anchors.left: parent.left
            anchors.leftMargin: 26
            anchors.verticalCenter: parent.verticalCenter
            color: option.highlighted ? Theme.accentContrast : Theme.text
            spoken: false
            text: option.text
        }
    }
}
