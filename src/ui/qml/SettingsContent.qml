// The whole window: the navigation column, a divider and the selected page.
import QtQuick
import orvo.settings

FocusScope {
    id: content

    property bool searchWanted: false
    // The part at the top that lies under the window's title bar.
    property real titleBarHeight: 0
    readonly property Item focused: Window.activeFocusItem

    function focusSearch() {
        if (!searchWanted || !page.item || !page.item.focusSearch)
            return;
        searchWanted = false;
        page.item.focusSearch();
    }
    function takeFocus() {
        if (!page.item || !page.item.takeFocus())
            navigation.takeFocus();
    }
    // Whatever had the focus may have gone: its row, its card, its message, or the use of it.
    function keepFocus() {
        let place = focused;
        while (place && !place.activeFocusOnTab && !place.isSelectable && place !== content)
            place = place.parent;
        const lost = !focused || focused === content.parent || place === content || (place && !(focused.visible && focused.enabled));
        if (lost)
            takeFocus();
    }

    focus: true
    Component.onCompleted: takeFocus()
    Keys.onEscapePressed: if (!page.item.clearSearch || !page.item.clearSearch())
        Window.window.close()
    Keys.onPressed: event => event.accepted = page.item.scrollByKey(event.key)
    onFocusedChanged: Qt.callLater(keepFocus)

    Connections {
        function onChanged() {
            Qt.callLater(content.keepFocus);
        }

        target: View
    }
    Rectangle {
        anchors.fill: parent
        color: Theme.window
    }
    Navigation {
        id: navigation

        anchors.left: parent.left
        height: parent.height
        titleBarHeight: content.titleBarHeight
        width: 190
    }
    Divider {
        id: divider

        anchors.left: navigation.right
        height: parent.height
    }
    Loader {
        id: page

        anchors.bottom: parent.bottom
        anchors.left: divider.right
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.topMargin: content.titleBarHeight
        focus: true
        source: ["IconsPage.qml", "BehaviorPage.qml", "AboutPage.qml"][View.page]
        onLoaded: content.focusSearch()
    }
    Shortcut {
        sequences: [StandardKey.Find]
        onActivated: {
            content.searchWanted = true;
            View.perform("page", 0);
            content.focusSearch();
        }
    }
    Shortcut {
        sequence: "Ctrl+W"
        onActivated: content.Window.window.close()
    }
}
