// A text that can be selected and copied: by the pointer, and by the keyboard where it may stop there.
import QtQuick
import orvo.settings

TextEdit {
    id: edit

    // A pointer that selects gives it the focus, where the keyboard stops or not.
    readonly property bool isSelectable: true

    color: Theme.text
    font.pixelSize: Theme.bodySize
    horizontalAlignment: Text.AlignLeft
    persistentSelection: false
    readOnly: true
    renderType: Text.NativeRendering
    selectByKeyboard: activeFocusOnTab
    selectByMouse: true
    selectedTextColor: Theme.text
    selectionColor: Theme.textSelection
    textFormat: TextEdit.PlainText

    HoverHandler {
        cursorShape: Qt.IBeamCursor
    }
    FocusRing {
        target: edit
    }
}
