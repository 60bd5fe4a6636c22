// A page whose parts stand below one another.
import QtQuick
import orvo.settings

ScrollArea {
    id: page

    default property alias items: column.data

    contentHeight: column.implicitHeight + 50

    Column {
        id: column

        spacing: 20
        width: Math.min(page.width - 56, Theme.contentWidth)
        x: 28
        y: 24
    }
}
