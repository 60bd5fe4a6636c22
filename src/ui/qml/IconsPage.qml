// Which applications own icons, what becomes of each, and the button that hides or reveals them. The list scrolls by
// itself; where the window has no room for two rows of it, the page does.
import QtQuick
import QtQuick.Layouts
import orvo.settings

ScrollArea {
    id: page

    function focusSearch() {
        list.toolbar.focusSearch();
    }
    function clearSearch() {
        if (View.searchText === "")
            return false;
        list.clearSearch();
        return true;
    }
    function scrollByKey(key) {
        return contentHeight > height ? scrollPage(key) : list.scrollByKey(key);
    }
    function takeFocus() {
        if (guidance.item && guidance.item.takeFocus && guidance.item.takeFocus())
            return true;
        if (View.searchEnabled)
            list.toolbar.takeFocus();
        return View.searchEnabled;
    }

    teller: told
    contentHeight: Math.max(height, column.implicitHeight + 46)

    ColumnLayout {
        id: column

        height: page.contentHeight - 46
        spacing: 16
        width: Math.min(page.width - 56, Theme.contentWidth)
        x: 28
        y: 24

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
            id: guidance

            Layout.fillWidth: true
            source: ({
                unsupported: "UnsupportedCard.qml",
                revealGuide: "RevealGuide.qml",
                setup: "SetupCard.qml"
            })[View.guidance]
        }
        IconList {
            id: list

            Layout.fillHeight: true
            Layout.fillWidth: true
            Layout.minimumHeight: list.leastHeight
            focus: true
        }
        MessageView {
            id: told

            Layout.fillWidth: true
        }
        ActionBar {
            Layout.fillWidth: true
        }
    }
}
