// A hairline between parts of a card: a whole number of the screen's pixels, so that all are alike.
import QtQuick
import orvo.settings

Rectangle {
    readonly property real hairline: Math.max(1, Math.floor(Screen.devicePixelRatio)) / Screen.devicePixelRatio

    color: Theme.divider
    implicitHeight: hairline
    implicitWidth: hairline
}
