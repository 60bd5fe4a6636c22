// The login item's switch: it asks for a change and shows what the model reports.
import QtQuick
import QtQuick.Templates as T
import orvo.settings

T.Switch {
    id: control

    objectName: "loginSwitch"

    required property string label
    required property string detail

    function ask(enabled) {
        checked = Qt.binding(() => View.launchAtLogin);
        View.perform("login", enabled);
    }

    checked: View.launchAtLogin
    focusPolicy: Qt.TabFocus
    implicitHeight: 22
    implicitWidth: 38
    opacity: enabled ? 1 : Theme.disabled
    Accessible.description: detail
    Accessible.name: label
    Accessible.onPressAction: ask(!checked)
    Accessible.onToggleAction: ask(!checked)
    Keys.onEnterPressed: ask(!checked)
    Keys.onReturnPressed: ask(!checked)
    onToggled: ask(checked)

    indicator: RoundedRectangle {
        anchors.fill: parent
        color: control.checked ? Theme.orvoAccent : Theme.switchOff
        radius: 11

        RoundedRectangle {
            color: Theme.accentContrast
            height: 18
            radius: 9
            width: 18
            x: control.checked ? parent.width - width - 2 : 2
            y: 2

            Behavior on x {
                NumberAnimation {
                    duration: Theme.movement
                    easing.type: Easing.OutCubic
                }
            }
        }
    }
    FocusRing {
        radius: 14
        target: control
    }
}
