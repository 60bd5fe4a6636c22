// A text that is read as its own element, unless its parent speaks for it.
import QtQuick
import orvo.settings

Text {
    property bool spoken: true

    color: Theme.text
    font.pixelSize: Theme.bodySize
    horizontalAlignment: Text.AlignLeft
    renderType: Text.NativeRendering
    textFormat: Text.PlainText
    Accessible.ignored: !spoken
    Accessible.name: text
    Accessible.role: Accessible.StaticText
}
