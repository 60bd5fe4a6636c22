// The menu of re-hide delays. A stored delay that it does not offer is shown in its own words, with no option chosen.
// Keys open the menu, and none of them chooses while it is closed.
import QtQuick
import orvo.settings

PlainButton {
    id: control

    property string detail
    readonly property string accessibleValue: View.rehideText
    readonly property bool expanded: menu.visible

    objectName: "rehidePicker"

    implicitHeight: 28
    ringRadius: 9
    Accessible.description: detail
    Keys.onDownPressed: menu.open()
    Keys.onUpPressed: menu.open()
    onClicked: menu.visible ? menu.close() : menu.open()

    background: ControlPanel {
        down: control.down || control.expanded
        hovered: control.hovered
    }
    contentItem: BodyText {
        elide: Text.ElideRight
        leftPadding: 9
        rightPadding: 24
        spoken: false
        text: View.rehideText
        verticalAlignment: Text.AlignVCenter
    }
    Symbol {
        anchors.right: parent.right
        anchors.rightMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        color: Theme.secondary
        name: "chevron.up.chevron.down"
        size: 13
    }
    MenuPopup {
        id: menu

        chosen: View.rehideOption
        options: View.rehideOptions
        picker: control
        onPicked: option => View.perform("rehide", option)
    }
}
