// In small and quiet letters.
import QtQuick
import orvo.settings

BodyText {
    color: Theme.secondary
    font.pixelSize: Theme.smallSize
}
