// The few settings: opening at login, the shortcut, and the automatic re-hide.
import QtQuick
import QtQuick.Layouts
import orvo.settings

ScrollPage {
    teller: told

    PageHeader {
        subtitle: View.texts.behaviorSubtitle
        title: View.texts.behaviorTitle
    }
    SettingsSection {
        title: View.texts.general

        RowLayout {
            spacing: 20
            width: parent.width

            TitledText {
                detail: View.texts.loginDetail
                spoken: false
                title: View.texts.loginTitle
            }
            LoginSwitch {
                detail: View.texts.loginDetail
                label: View.texts.loginTitle
            }
        }
        Divider {
            width: parent.width
        }
        Row {
            spacing: 7
            width: parent.width

            Symbol {
                anchors.verticalCenter: parent.verticalCenter
                color: Theme.secondary
                name: "checkmark.circle"
                size: 15
                weight: 1.2
            }
            DetailText {
                text: View.texts.startsVisible
                width: parent.width - 22
                wrapMode: Text.Wrap
            }
        }
    }
    SettingsSection {
        title: View.texts.revealAndRehide

        RowLayout {
            spacing: 20
            width: parent.width
            Accessible.description: View.shortcutDetail
            Accessible.name: View.texts.shortcutTitle + ": " + View.texts.shortcut
            Accessible.role: Accessible.StaticText

            TitledText {
                detail: View.shortcutDetail
                spoken: false
                title: View.texts.shortcutTitle
            }
            ShortcutBadge {
                spoken: false
            }
        }
        Divider {
            width: parent.width
        }
        RowLayout {
            spacing: 20
            width: parent.width

            TitledText {
                detail: View.texts.rehideDetail
                spoken: false
                title: View.texts.rehideTitle
            }
            RehidePicker {
                Layout.preferredWidth: 145
                detail: View.texts.rehideDetail
                name: View.texts.rehideTitle
            }
        }
    }
    InformationCard {
        card: View.systemControlsCard
        width: parent.width
    }
    MessageView {
        id: told

        width: parent.width
    }
}
