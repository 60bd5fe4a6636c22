// Shows where the keyboard is; a pointer's click needs no such mark.
import QtQuick
import orvo.settings

RoundedRectangle {
    required property Item target

    anchors.fill: parent
    anchors.margins: -3
    borderColor: Theme.focusRing
    borderWidth: 2
    radius: 7
    visible: target.activeFocus && KeyboardNavigation.inUse
    z: 1
}
