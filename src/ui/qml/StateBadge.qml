// The small capsule that tells the bar's state, read as one element.
import QtQuick
import orvo.settings

Panel {
    color: Theme.badge
    implicitHeight: 26
    implicitWidth: row.implicitWidth + 22
    radius: 8
    Accessible.name: View.stateBadge.text
    Accessible.role: Accessible.StaticText

    Row {
        id: row

        anchors.centerIn: parent
        spacing: 7

        Spinner {
            anchors.verticalCenter: parent.verticalCenter
            implicitHeight: 12
            implicitWidth: 12
            visible: View.stateBadge.indicator === View.Progress
        }
        Panel {
            anchors.verticalCenter: parent.verticalCenter
            color: View.stateBadge.indicator === View.AccentDot ? Theme.accent : Theme.secondary
            implicitHeight: 6
            implicitWidth: 6
            radius: 3
            visible: View.stateBadge.indicator !== View.Progress
        }
        BodyText {
            anchors.verticalCenter: parent.verticalCenter
            font.pixelSize: Theme.captionSize
            font.weight: Font.Medium
            spoken: false
            text: View.stateBadge.text
        }
    }
}
