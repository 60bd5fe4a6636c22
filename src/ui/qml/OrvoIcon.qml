// The application's own icon, in its own colours.
import QtQuick
import orvo.settings

Symbol {
    color: "transparent"
    name: "orvo"
}
