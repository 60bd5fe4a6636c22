// The applications, one row each. The keyboard stays on one row: up and down change it, left and right
// choose in it, and Tab leaves the list.
import QtQuick
import QtQuick.Templates as T
import orvo.settings

ListView {
    id: rows

    readonly property int rowHeight: 50
    readonly property int rowsAPage: Math.max(1, Math.floor(height / rowHeight) - 1)

    function goTo(row) {
        currentIndex = Math.max(0, Math.min(count - 1, row));
        showCurrent();
        currentItem.forceActiveFocus(Qt.OtherFocusReason);
    }
    function showCurrent() {
        positionViewAtIndex(currentIndex, ListView.Contain);
    }
    // The row that the key leads to from another one; undefined for a key that leads nowhere.
    function place(key, from) {
        return new Map([[Qt.Key_PageDown, from + rowsAPage], [Qt.Key_PageUp, from - rowsAPage], [Qt.Key_Home, 0], [Qt.Key_End, count - 1]]).get(key);
    }
    // Without the focus: it stays where it is.
    function scrollByKey(key) {
        const row = place(key, indexAt(1, contentY + 1));
        if (row !== undefined)
            positionViewAtIndex(Math.max(0, Math.min(count - 1, row)), ListView.Beginning);
        return row !== undefined;
    }

    activeFocusOnTab: true
    cacheBuffer: 0
    reuseItems: true
    clip: true
    highlightFollowsCurrentItem: false
    interactive: false
    keyNavigationEnabled: false
    model: View.rows
    Accessible.name: View.texts.apps
    Accessible.role: Accessible.List
    // By itself it would find the list before the row in it, and stay.
    Keys.onBacktabPressed: nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
    Keys.onDownPressed: goTo(currentIndex + 1)
    Keys.onPressed: event => {
        const row = place(event.key, currentIndex);
        event.accepted = row !== undefined;
        if (event.accepted)
            goTo(row);
    }
    Keys.onUpPressed: goTo(currentIndex - 1)

    delegate: AppRow {
        height: rows.rowHeight
        last: index === rows.count - 1
        width: rows.width
        onEntered: {
            rows.currentIndex = index;
            rows.showCurrent();
        }
    }
    T.ScrollBar.vertical: ScrollIndicatorBar {
    }
    add: Transition {
        NumberAnimation {
            duration: Theme.movement
            from: 0
            property: "opacity"
            to: 1
        }
    }
    displaced: Transition {
        NumberAnimation {
            duration: Theme.movement
            easing.type: Easing.OutCubic
            property: "y"
        }
        // A row that is pushed aside while it still appears.
        NumberAnimation {
            duration: Theme.movement
            property: "opacity"
            to: 1
        }
    }
}
