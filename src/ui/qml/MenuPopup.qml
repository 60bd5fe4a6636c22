// The open list of a picker's options, as wide as the picker. The keyboard is in it until it closes.
import QtQuick
import QtQuick.Templates as T
import orvo.settings

T.Popup {
    id: popup

    required property PlainButton picker
    required property var options
    // -1 for none.
    required property int chosen
    signal picked(int option)

    function pick(option) {
        close();
        if (option >= 0)
            picked(option);
    }

    // The picker itself closes it with a second click.
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent
    focus: true
    height: contentItem.implicitHeight + topPadding + bottomPadding
    margins: 8
    padding: 5
    width: picker.width
    y: picker.height + 4
    onAboutToShow: {
        contentItem.parent.Accessible.name = picker.name;
        contentItem.currentIndex = chosen;
    }
    onClosed: picker.forceActiveFocus(Qt.PopupFocusReason)

    background: PopupPanel {
        radius: 9
    }
    contentItem: ListView {
        currentIndex: -1
        focus: true
        highlightMoveDuration: 0
        implicitHeight: contentHeight
        interactive: false
        keyNavigationEnabled: true
        model: popup.options
        Accessible.role: Accessible.PopupMenu
        Keys.onReturnPressed: popup.close()
        Keys.onPressed: event => {
            const ends = new Map([[Qt.Key_Home, 0], [Qt.Key_End, count - 1]]);
            event.accepted = ends.has(event.key);
            if (event.accepted)
                currentIndex = ends.get(event.key);
        }

        delegate: MenuOption {
            required property int index
            required property string modelData

            chosen: popup.chosen === index
            highlighted: ListView.isCurrentItem
            text: modelData
            width: ListView.view.width
            // Left behind when nothing is current any more.
            ListView.onIsCurrentItemChanged: if (ListView.view.currentIndex < 0)
                focus = false
            onEntered: ListView.view.currentIndex = index
            onPicked: popup.pick(index)
        }
    }
}
