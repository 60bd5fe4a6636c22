// Which applications own icons, what becomes of each, and the button that hides or reveals them.
import QtQuick
import QtQuick.Layouts
import orvo.settings

FocusScope {
    function focusSearch() {
        list.focusSearch();
    }

    ColumnLayout {
        anchors.bottomMargin: 22
        anchors.fill: parent
        anchors.leftMargin: 28
        anchors.rightMargin: 28
        anchors.topMargin: 24
        spacing: 16

        RowLayout {
            PageHeader {
                Layout.fillWidth: true
                subtitle: View.texts.iconsSubtitle
                title: View.texts.iconsTitle
            }
            StateBadge {
            }
        }
        Loader {
            Layout.fillWidth: true
            source: ["UnsupportedCard.qml", "RevealGuide.qml", "SetupCard.qml"][View.guidance]
        }
        IconList {
            id: list

            Layout.fillHeight: true
            Layout.fillWidth: true
            focus: true
        }
        MessageView {
            Layout.fillWidth: true
        }
        ActionBar {
            Layout.fillWidth: true
        }
    }
}
