// One segment of a picker. It shows whether it is chosen and only asks for a change.
import QtQuick
import QtQuick.Templates as T
import orvo.settings

T.RadioButton {
    id: segment

    required property bool chosen
    signal picked

    autoExclusive: false
    checked: chosen
    focus: chosen
    focusPolicy: Qt.NoFocus
    font.pixelSize: Theme.smallSize
    font.weight: chosen ? Font.DemiBold : Font.Normal
    Accessible.name: text
    Accessible.onPressAction: if (enabled)
        picked()
    Accessible.onToggleAction: if (enabled)
        picked()
    Keys.onEnterPressed: picked()
    Keys.onReturnPressed: picked()
    onClicked: {
        checked = Qt.binding(() => chosen);
        picked();
    }

    contentItem: BodyText {
        color: segment.chosen ? (segment.text === "Hide" ? Theme.onAccent : Theme.text) : Theme.secondary
        font: segment.font
        horizontalAlignment: Text.AlignHCenter
        spoken: false
        text: segment.text
        verticalAlignment: Text.AlignVCenter
    }
    FocusRing {
        radius: 8
        target: segment
    }
}
