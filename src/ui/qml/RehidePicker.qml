// The menu of re-hide delays. A stored delay that it does not offer is shown in its own words, with no
// option chosen.
import QtQuick
import QtQuick.Templates as T
import orvo.settings

T.ComboBox {
    id: control

    objectName: "rehidePicker"

    required property string label

    function ask(option) {
        currentIndex = Qt.binding(() => View.rehideOption);
        View.chooseRehideOption(option);
    }

    currentIndex: View.rehideOption
    displayText: View.rehideText
    focusPolicy: Qt.TabFocus
    font.pixelSize: Theme.bodySize
    implicitHeight: 28
    model: View.rehideOptions
    Accessible.name: label
    Accessible.onPressAction: popup.open()
    // As Space does by itself; once the menu is open, Return is the menu's own.
    Keys.onReleased: event => {
        event.accepted = !popup.visible && (event.key === Qt.Key_Return || event.key === Qt.Key_Enter);
        if (event.accepted)
            popup.open();
    }
    onActivated: index => ask(index)

    background: Panel {
        borderColor: Theme.controlOutline
        color: Theme.control
        radius: 6.5

        Panel {
            anchors.fill: parent
            color: control.down ? Theme.pressed : control.hovered ? Theme.hover : "transparent"
            radius: parent.radius
        }
    }
    contentItem: BodyText {
        elide: Text.ElideRight
        leftPadding: 11
        rightPadding: 28
        spoken: false
        text: control.displayText
        verticalAlignment: Text.AlignVCenter
    }
    delegate: MenuOption {
        required property int index
        required property string modelData

        chosen: control.currentIndex === index
        highlighted: control.highlightedIndex === index
        text: modelData
        width: ListView.view.width
    }
    indicator: Symbol {
        color: Theme.secondary
        name: "chevron.up.chevron.down"
        size: 13
        x: control.width - width - 8
        y: (control.height - height) / 2
    }
    popup: MenuPopup {
        menu: control
    }
    FocusRing {
        radius: 9
        target: control
    }
}
