// The open list of a picker's options.
import QtQuick
import QtQuick.Templates as T
import orvo.settings

T.Popup {
    id: popup

    required property T.ComboBox menu

    height: contentItem.implicitHeight + topPadding + bottomPadding
    margins: 8
    padding: 5
    width: menu.width + 24
    x: menu.width - width
    y: menu.height + 4

    background: Panel {
        borderColor: Theme.controlOutline
        color: Theme.popup
        radius: 9
    }
    contentItem: ListView {
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        currentIndex: popup.menu.highlightedIndex
        highlightMoveDuration: 0
        implicitHeight: contentHeight
        model: popup.visible ? popup.menu.delegateModel : null
    }
}
