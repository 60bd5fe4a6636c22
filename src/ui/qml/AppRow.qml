// One application: its icon, its name, what becomes of its icons, and the choice.
import QtQuick
import orvo.settings

FocusScope {
    id: row

    required property int index
    required property var app
    required property bool last
    readonly property string bundleID: app.bundleID
    // The keyboard or a press has come to this row.
    signal entered

    clip: true
    // A row that is put aside for later use is no row, to assistive programs either; it may have been fading in.
    ListView.onPooled: visible = false
    ListView.onReused: {
        opacity = 1;
        visible = true;
    }
    Accessible.description: app.detail
    Accessible.name: app.name
    Accessible.role: Accessible.ListItem
    onActiveFocusChanged: if (activeFocus)
        entered()
    // What is known of its program late may bring its icon.
    onAppChanged: if (!icon.available)
        icon.fetch()

    Rectangle {
        anchors.fill: parent
        color: tap.pressed ? Theme.pressed : Theme.hover
        visible: hover.hovered || tap.pressed
    }
    HoverHandler {
        id: hover
    }
    // A press beside the choice brings the keyboard there.
    Item {
        anchors.bottom: parent.bottom
        anchors.left: parent.left
        anchors.right: picker.left
        anchors.top: parent.top

        TapHandler {
            id: tap

            onTapped: row.forceActiveFocus(Qt.MouseFocusReason)
        }
    }
    RowIcon {
        id: icon

        anchors.left: parent.left
        anchors.leftMargin: 14
        anchors.verticalCenter: parent.verticalCenter
        height: 29
        pid: row.app.pid
        width: 29

        Symbol {
            anchors.fill: parent
            color: Theme.secondary
            name: "app.dashed"
            size: 29
            visible: !icon.available
        }
    }
    Column {
        anchors.left: parent.left
        anchors.leftMargin: 58
        anchors.right: picker.left
        anchors.rightMargin: 14
        anchors.verticalCenter: parent.verticalCenter
        spacing: 1

        BodyText {
            elide: Text.ElideRight
            font.weight: Theme.titleWeight
            maximumLineCount: 1
            spoken: false
            text: row.app.name
            width: parent.width
        }
        DetailText {
            elide: Text.ElideRight
            spoken: false
            text: row.app.detail
            width: parent.width
        }
    }
    SegmentedPicker {
        id: picker

        anchors.right: parent.right
        anchors.rightMargin: 14
        anchors.verticalCenter: parent.verticalCenter
        enabled: View.pickersEnabled
        focus: true
        hide: row.app.hidden
        label: row.app.pickerLabel
        width: 126
        onChosen: hide => View.perform(hide ? "hide" : "keep", row.bundleID)
    }
    Divider {
        anchors.bottom: parent.bottom
        anchors.left: parent.left
        anchors.leftMargin: 58
        anchors.right: parent.right
        visible: !row.last
    }
}
