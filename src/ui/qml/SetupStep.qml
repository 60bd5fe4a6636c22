// One precondition: its number, or a check mark once it is met. Read as one element.
import QtQuick
import orvo.settings

Row {
    required property var step

    spacing: 9
    Accessible.name: step.accessibilityLabel
    Accessible.role: Accessible.StaticText

    RoundedRectangle {
        color: parent.step.complete ? Theme.orvoAccent : Theme.quietStep
        height: 22
        radius: 11
        width: 22

        Symbol {
            anchors.centerIn: parent
            color: Theme.accentContrast
            name: "checkmark"
            size: 13
            visible: step.complete
            weight: 2.1
        }
        DetailText {
            anchors.centerIn: parent
            font.weight: Font.DemiBold
            spoken: false
            text: step.number
            visible: !step.complete
        }
    }
    BodyText {
        anchors.verticalCenter: parent.verticalCenter
        color: parent.step.complete ? Theme.text : Theme.secondary
        font.weight: Theme.titleWeight
        spoken: false
        text: parent.step.title
    }
}
