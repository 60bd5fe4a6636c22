// What every button shares: keys, accessibility and its tool tip. Its looks are its user's.
import QtQuick
import QtQuick.Templates as T
import orvo.settings

T.Button {
    id: button

    property string name: text
    property string toolTip
    property alias ringRadius: ring.radius
    // The pointer hovers over what is disabled too.
    readonly property bool lit: hovered && enabled

    focusPolicy: Qt.TabFocus
    font.pixelSize: Theme.bodySize
    hoverEnabled: true
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    opacity: enabled ? 1 : Theme.disabled
    Accessible.name: name
    Accessible.description: toolTip === name ? "" : toolTip
    Accessible.onPressAction: if (enabled)
        clicked()
    Keys.onEnterPressed: clicked()
    Keys.onReturnPressed: clicked()

    FocusRing {
        id: ring

        target: button
    }
    HoverTip {
        text: button.toolTip
        visible: text !== "" && button.hovered && !button.down
    }
}
