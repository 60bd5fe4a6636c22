// The search field with its clear button, and the refresh button or the sign that it runs.
import QtQuick
import QtQuick.Layouts
import orvo.settings

FocusScope {
    id: toolbar

    function focusSearch() {
        search.forceActiveFocus(Qt.ShortcutFocusReason);
        search.selectAll();
    }

    implicitHeight: 42

    RowLayout {
        anchors.fill: parent
        anchors.leftMargin: 15
        anchors.rightMargin: 10
        spacing: 8

        Symbol {
            color: Theme.secondary
            name: "magnifyingglass"
            size: 15
        }
        SearchField {
            id: search

            Layout.fillHeight: true
            Layout.fillWidth: true
            focus: true
        }
        IconButton {
            Layout.preferredHeight: 22
            Layout.preferredWidth: 22
            name: "Clear search"
            symbol: "xmark.circle.fill"
            visible: View.offersClearSearch
            onClicked: {
                View.clearSearch();
                search.forceActiveFocus(Qt.OtherFocusReason);
            }
        }
        IconButton {
            Layout.preferredHeight: 22
            Layout.preferredWidth: 22
            enabled: View.refreshEnabled
            name: "Refresh menu bar icons"
            symbol: "arrow.clockwise"
            visible: !View.isScanning
            onClicked: View.refresh()
        }
        Item {
            Layout.preferredHeight: 22
            Layout.preferredWidth: 22
            visible: View.isScanning
            Accessible.name: "Refreshing menu bar icons"
            Accessible.role: Accessible.Animation

            Spinner {
                anchors.centerIn: parent
                width: 14
            }
        }
    }
}
