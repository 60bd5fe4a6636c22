// One segment of a picker.
import QtQuick
import orvo.settings

PlainButton {
    id: segment

    required property bool chosen
    required property bool reachable

    activeFocusOnTab: chosen && reachable
    focus: chosen
    focusPolicy: chosen && reachable ? Qt.TabFocus : Qt.NoFocus
    font.pixelSize: Theme.smallSize
    font.weight: chosen ? Font.DemiBold : Font.Normal
    ringRadius: 8
    Accessible.checkable: true
    Accessible.checked: chosen
    Accessible.role: Accessible.RadioButton

    contentItem: BodyText {
        color: segment.chosen ? (segment.text === "Hide" ? Theme.onAccent : Theme.text) : Theme.secondary
        font: segment.font
        horizontalAlignment: Text.AlignHCenter
        spoken: false
        text: segment.text
        verticalAlignment: Text.AlignVCenter
    }
}
