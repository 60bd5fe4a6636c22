// The plain field that filters the applications.
import QtQuick
import QtQuick.Templates as T
import orvo.settings

T.TextField {
    id: field

    color: Theme.text
    enabled: View.searchEnabled
    font.pixelSize: Theme.bodySize
    implicitHeight: 26
    opacity: enabled ? 1 : Theme.disabled
    placeholderText: View.texts.find
    placeholderTextColor: Theme.tertiary
    renderType: Text.NativeRendering
    selectByMouse: true
    selectedTextColor: Theme.text
    selectionColor: Theme.textSelection
    text: View.searchText
    verticalAlignment: TextInput.AlignVCenter
    Accessible.description: ""
    Accessible.name: placeholderText
    Accessible.role: Accessible.EditableText
    Accessible.searchEdit: true
    onTextEdited: View.perform("search", text)

    BodyText {
        anchors.fill: parent
        color: field.placeholderTextColor
        elide: Text.ElideRight
        spoken: false
        text: field.placeholderText
        verticalAlignment: Text.AlignVCenter
        visible: field.text === "" && field.preeditText === ""
    }
    FocusRing {
        anchors.bottomMargin: 7
        anchors.leftMargin: -31
        anchors.rightMargin: 0
        anchors.topMargin: 7
        target: field
    }
}
