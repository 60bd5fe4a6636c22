// The card with the search field, the applications or what stands in their place, and their count.
import QtQuick
import orvo.settings

FocusScope {
    id: list

    property alias toolbar: toolbar
    // Of two rows, or of what stands in their place.
    readonly property real leastHeight: toolbar.height + divider.height + footer.height + (View.hasRows ? 2 * rows.rowHeight : empty.implicitHeight)

    function clearSearch() {
        View.perform("search", "");
        toolbar.focusSearch();
    }
    function scrollByKey(key) {
        return rows.visible && rows.scrollByKey(key);
    }

    RoundedRectangle {
        anchors.fill: parent
        borderColor: Theme.outline
        color: Theme.card
        radius: 10
    }
    ListToolbar {
        id: toolbar

        anchors.left: parent.left
        anchors.right: parent.right
        focus: true
    }
    Divider {
        id: divider

        anchors.top: toolbar.bottom
        width: parent.width
    }
    ScrollWheel {
        notch: 3 * rows.rowHeight
        view: rows
    }
    AppRows {
        id: rows

        anchors.bottom: footer.top
        anchors.left: parent.left
        anchors.margins: 1
        anchors.right: parent.right
        anchors.top: divider.bottom
        visible: View.hasRows
    }
    EmptyState {
        id: empty

        anchors.bottom: footer.top
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: divider.bottom
        visible: !View.hasRows
        onClearSearch: list.clearSearch()
    }
    ListFooter {
        id: footer

        anchors.bottom: parent.bottom
        height: visible ? implicitHeight : 0
        visible: View.showsListFooter
        width: parent.width
    }
}
