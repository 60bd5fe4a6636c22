// The few settings: opening at login, the shortcut, and the automatic re-hide.
import QtQuick
import QtQuick.Layouts
import orvo.settings

ScrollPage {
    PageHeader {
        subtitle: "Make Orvo fit into your day."
        title: "Behavior"
    }
    SettingsSection {
        title: "GENERAL"

        RowLayout {
            spacing: 20
            width: parent.width

            SettingLabel {
                detail: "Keep your menu bar choices close at hand."
                title: "Open Orvo at login"
            }
            LoginSwitch {
                label: "Open Orvo at login"
            }
        }
        Divider {
            width: parent.width
        }
        Row {
            spacing: 7

            Symbol {
                anchors.verticalCenter: parent.verticalCenter
                color: Theme.secondary
                name: "checkmark.circle"
                size: 15
                weight: 1.2
            }
            BodyText {
                color: Theme.secondary
                font.pixelSize: Theme.smallSize
                text: "Icons start visible whenever Orvo opens."
            }
        }
    }
    SettingsSection {
        title: "REVEAL AND REHIDE"

        RowLayout {
            spacing: 20
            width: parent.width

            SettingLabel {
                detail: View.shortcutDetail
                title: "Toggle icons from any app"
            }
            ShortcutBadge {
            }
        }
        Divider {
            width: parent.width
        }
        RowLayout {
            spacing: 20
            width: parent.width

            SettingLabel {
                detail: "After revealing with Orvo or its shortcut."
                title: "Automatically hide again"
            }
            RehidePicker {
                Layout.preferredWidth: 145
                label: "Automatically hide again"
            }
        }
    }
    InformationCard {
        card: View.systemControlsCard
        width: parent.width
    }
    MessageView {
        width: parent.width
    }
}
