// A page whose content scrolls, and follows the keyboard's focus.
import QtQuick
import QtQuick.Templates as T
import orvo.settings

FocusScope {
    id: page

    default property alias items: column.data
    readonly property Item focused: Window.activeFocusItem

    function show(item) {
        const place = item.mapToItem(column, 0, 0).y;
        const margin = 20;
        if (place - margin < flick.contentY)
            flick.contentY = Math.max(0, place - margin);
        else if (place + item.height + margin > flick.contentY + flick.height)
            flick.contentY = Math.min(flick.contentHeight - flick.height, place + item.height + margin - flick.height);
    }

    onFocusedChanged: {
        for (let item = focused; item; item = item.parent)
            if (item === column)
                show(focused);
    }

    Flickable {
        id: flick

        anchors.fill: parent
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        contentHeight: column.implicitHeight + 50
        contentWidth: width
        T.ScrollBar.vertical: ScrollIndicatorBar {
        }

        Column {
            id: column

            spacing: 20
            width: flick.width - 56
            x: 28
            y: 24
        }
    }
}
