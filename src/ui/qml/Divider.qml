// A hairline between parts of a card.
import QtQuick
import orvo.settings

Rectangle {
    color: Theme.divider
    implicitHeight: 1
    implicitWidth: 1
}
