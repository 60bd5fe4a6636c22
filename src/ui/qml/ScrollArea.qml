// What is taller than the window scrolls: by the wheel, by the keys that turn pages, and after the keyboard's focus.
import QtQuick
import QtQuick.Templates as T
import orvo.settings

FocusScope {
    id: area

    default property alias content: flick.flickableData
    property alias contentHeight: flick.contentHeight
    readonly property Item focused: Window.activeFocusItem
    // Where the page tells what it has to tell: brought into sight when that comes.
    property Item teller: null
    readonly property string message: View.message
    property bool messageIsNew: false
    property bool isComplete: false

    function show(item) {
        const place = item.mapToItem(flick.contentItem, 0, 0).y;
        const margin = 24;
        if (place - margin < flick.contentY)
            wheel.scrollTo(place - margin);
        else if (place + item.height + margin > flick.contentY + flick.height)
            wheel.scrollTo(place + item.height + margin - flick.height);
    }
    function scrollByKey(key) {
        return scrollPage(key);
    }
    // False for a key that scrolls nothing.
    function scrollPage(key) {
        const page = flick.height - 40;
        const places = new Map([[Qt.Key_PageDown, flick.contentY + page], [Qt.Key_PageUp, flick.contentY - page], [Qt.Key_Home, 0], [Qt.Key_End, flick.contentHeight]]);
        if (places.has(key))
            wheel.scrollTo(places.get(key));
        return places.has(key);
    }
    // False when there is nothing that the keyboard could work.
    function takeFocus() {
        const first = flick.contentItem.nextItemInFocusChain(true);
        if (!holds(first))
            return false;
        first.forceActiveFocus(Qt.OtherFocusReason);
        return true;
    }
    function holds(item) {
        for (; item; item = item.parent)
            if (item === flick.contentItem)
                return true;
        return false;
    }

    onFocusedChanged: if (holds(focused))
        show(focused)
    // One that is there already when the page opens is not new.
    onMessageChanged: messageIsNew = isComplete && message !== ""
    Component.onCompleted: isComplete = true

    // By then the page is laid out anew.
    Connections {
        function onAfterAnimating() {
            area.messageIsNew = false;
            area.show(area.teller);
        }

        enabled: area.messageIsNew && area.teller
        target: area.Window.window
    }

    ScrollWheel {
        id: wheel

        notch: 60
        view: flick
    }
    Flickable {
        id: flick

        anchors.fill: parent
        clip: true
        contentWidth: width
        interactive: false
        T.ScrollBar.vertical: ScrollIndicatorBar {
        }
    }
}
