// A text that can be selected and copied, by pointer and by keyboard.
import QtQuick
import orvo.settings

TextEdit {
    id: edit

    activeFocusOnTab: true
    color: Theme.text
    font.pixelSize: Theme.bodySize
    horizontalAlignment: Text.AlignLeft
    persistentSelection: false
    readOnly: true
    renderType: Text.NativeRendering
    selectByMouse: true
    selectedTextColor: Theme.text
    selectionColor: Theme.textSelection
    textFormat: TextEdit.PlainText
    Accessible.name: text
    Accessible.readOnly: true

    HoverHandler {
        cursorShape: Qt.IBeamCursor
    }
    FocusRing {
        target: edit
    }
}
