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

    function takeFocus() {
        search.forceActiveFocus(Qt.OtherFocusReason);
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
            opacity: search.opacity
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
            visible: View.searchText !== ""
            onClicked: {
                View.perform("search", "");
                search.forceActiveFocus(Qt.OtherFocusReason);
            }
        }
        // Whichever of the two shows has the focus that the other had.
        FocusScope {
            id: refreshing

            readonly property bool scanning: View.isScanning

            Layout.preferredHeight: 22
            Layout.preferredWidth: 22
            onScanningChanged: if (activeFocus)
                (scanning ? progress : refresh).forceActiveFocus(Qt.OtherFocusReason)

            IconButton {
                id: refresh

                anchors.fill: parent
                enabled: View.searchEnabled
                name: View.texts.refresh
                symbol: "arrow.clockwise"
                visible: !refreshing.scanning
                onClicked: View.perform("refresh")
            }
            Item {
                id: progress

                activeFocusOnTab: true
                height: 22
                visible: refreshing.scanning
                width: 18
                x: 2
                Accessible.name: View.texts.refreshing
                Accessible.role: Accessible.Animation

                Spinner {
                    anchors.centerIn: parent
                    width: 14
                }
                FocusRing {
                    target: progress
                }
            }
        }
    }
}
