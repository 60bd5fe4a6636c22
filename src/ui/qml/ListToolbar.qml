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
            opacity: search.enabled ? 1 : 0.4
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
            name: View.texts.clearSearch
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
            name: View.texts.refresh
            symbol: "arrow.clockwise"
            visible: !View.isScanning
            onClicked: View.refresh()
        }
        Item {
            Layout.leftMargin: 2
            Layout.preferredHeight: 22
            Layout.preferredWidth: 18
            Layout.rightMargin: 2
            visible: View.isScanning
            Accessible.name: View.texts.refreshing
            Accessible.role: Accessible.Animation

            Spinner {
                anchors.centerIn: parent
                width: 14
            }
        }
    }
}
