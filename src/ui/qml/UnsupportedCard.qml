// Stands where guidance would when nothing can be hidden on this system, with what may help.
import QtQuick
import orvo.settings

InformationCard {
    function takeFocus() {
        if (button.visible)
            button.forceActiveFocus(Qt.OtherFocusReason);
        return button.visible;
    }

    card: View.unsupportedCard
    trailing: button.visible ? button.width + 20 : 0

    PushButton {
        id: button

        anchors.right: parent.right
        anchors.rightMargin: 16
        anchors.verticalCenter: parent.verticalCenter
        enabled: View.takeOver.enabled
        prominent: true
        text: View.takeOver.label
        visible: text !== ""
        onClicked: View.perform("takeOver")
    }
}
