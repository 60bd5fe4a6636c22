// A hairline between parts of a card: a whole number of the screen's pixels, so that all are alike.
import QtQuick
import orvo.settings

Rectangle {
    id: divider

    readonly property real hairline: Math.max(1, Math.floor(Screen.devicePixelRatio)) / Screen.devicePixelRatio

    color: Theme.divider
    implicitHeight: 1
    implicitWidth: 1
    // By scaling, since the software renderer rounds a size to whole points; at the lower edge.
    transform: Scale {
        origin.y: divider.height
        xScale: divider.width > 1 ? 1 : divider.hairline
        yScale: divider.height > 1 ? 1 : divider.hairline
    }
}
