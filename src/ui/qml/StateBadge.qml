// The small capsule that tells the bar's state, read as one element.
import QtQuick
import orvo.settings

RoundedRectangle {
    clip: true
    color: Theme.badge
    implicitHeight: 26
    implicitWidth: row.implicitWidth + 22
    radius: 8
    Accessible.name: View.stateBadge.text
    Accessible.role: Accessible.StaticText

    Behavior on implicitWidth {
        NumberAnimation {
            duration: Theme.movement
            easing.type: Easing.OutCubic
        }
    }
    Row {
        id: row

        anchors.right: parent.right
        anchors.rightMargin: 11
        anchors.verticalCenter: parent.verticalCenter
        spacing: 7

        Spinner {
            anchors.verticalCenter: parent.verticalCenter
            implicitHeight: 12
            implicitWidth: 12
            visible: View.stateBadge.inProgress
        }
        RoundedRectangle {
            anchors.verticalCenter: parent.verticalCenter
            color: View.stateBadge.accentDot ? Theme.orvoAccent : Theme.secondary
            implicitHeight: 6
            implicitWidth: 6
            radius: 3

            Behavior on color {
                ColorAnimation {
                    duration: Theme.movement
                }
            }
            visible: !View.stateBadge.inProgress
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
