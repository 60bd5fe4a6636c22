// How hidden icons come back.
import QtQuick
import QtQuick.Layouts
import orvo.settings

RoundedRectangle {
    borderColor: Theme.divider
    color: Theme.fill
    implicitHeight: row.implicitHeight + 24
    radius: 10

    RowLayout {
        id: row

        anchors.left: parent.left
        anchors.leftMargin: 14
        anchors.right: parent.right
        anchors.rightMargin: 14
        anchors.verticalCenter: parent.verticalCenter
        spacing: 12

        RoundedRectangle {
            color: Theme.guideTile
            implicitHeight: 30
            implicitWidth: 30
            radius: 7

            Symbol {
                anchors.centerIn: parent
                color: Theme.orvoAccent
                name: "chevron.left"
                size: 16
                weight: 2
            }
        }
        TitledText {
            detail: View.texts.guideDetail
            title: View.texts.guideTitle
        }
        ShortcutBadge {
            visible: View.shortcutAvailable
        }
    }
}
