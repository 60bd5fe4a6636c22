// Scrolls the view that it lies behind by the wheel and by touch, both without a throw. A view by itself would speed up
// with quick notches and let the pointer's left button drag it, even from a control.
import QtQuick

MouseArea {
    id: wheel

    required property Flickable view
    // How far one notch goes.
    required property real notch

    function scrollTo(y) {
        const top = view.originY;
        view.contentY = Math.max(top, Math.min(top + view.contentHeight - view.height, y));
    }

    acceptedButtons: Qt.NoButton
    anchors.fill: view
    // What cannot scroll any further leaves the wheel to what it stands on. Pixels are reliable on a Mac alone.
    onWheel: event => {
        const before = view.contentY;
        const pixels = Qt.platform.os === "osx" ? event.pixelDelta.y : 0;
        scrollTo(before - (pixels || event.angleDelta.y / 120 * notch));
        event.accepted = view.contentY !== before;
    }

    DragHandler {
        property real start

        acceptedDevices: PointerDevice.TouchScreen
        target: null
        xAxis.enabled: false
        onActiveChanged: start = wheel.view.contentY
        onActiveTranslationChanged: wheel.scrollTo(start - activeTranslation.y)
    }
}
