// What Orvo is, how it stands on this system, and what it does with what it knows.
import QtQuick
import QtQuick.Layouts
import orvo.settings

ScrollPage {
    Row {
        spacing: 16

        OrvoIcon {
            size: 58
        }
        Column {
            anchors.verticalCenter: parent.verticalCenter
            spacing: 1

            BodyText {
                font.letterSpacing: -0.2
                font.pixelSize: Theme.titleSize
                font.weight: Font.DemiBold
                text: "Orvo"
                Accessible.role: Accessible.Heading
            }
            BodyText {
                color: Theme.secondary
                font.pixelSize: Theme.smallSize
                text: "Version " + View.version
            }
            BodyText {
                color: Theme.secondary
                font.pixelSize: Theme.smallSize
                text: "A calmer menu bar."
            }
        }
    }
    SettingsSection {
        title: "ON THIS MAC"

        Column {
            spacing: 9
            width: parent.width

            Repeater {
                // By number, so that a change updates the rows in place.
                model: View.diagnostics.length

                DiagnosticRow {
                    required property int index

                    row: View.diagnostics[index]
                    width: parent.width
                }
            }
        }
        Divider {
            width: parent.width
        }
        PushButton {
            bottomPadding: 4
            font.pixelSize: Theme.smallSize
            leftPadding: 10
            rightPadding: 10
            symbol: View.copyButton.symbol
            text: View.copyButton.text
            topPadding: 4
            onClicked: View.copyDiagnostics()
        }
    }
    InformationCard {
        card: View.privacyCard
        width: parent.width
    }
    Column {
        spacing: 4
        width: parent.width

        BodyText {
            font.weight: Font.DemiBold
            text: "Built for macOS 27"
        }
        BodyText {
            color: Theme.secondary
            font.pixelSize: Theme.smallSize
            text: "Orvo uses a private macOS menu bar API that may change with system updates. Each choice applies to all icons from one app. Some system extras may be unavailable while icons are hidden; quitting Orvo restores the bar."
            width: parent.width
            wrapMode: Text.Wrap
        }
        Row {
            spacing: 18
            topPadding: 5

            Repeater {
                model: View.linkLabels

                WebLink {
                    required property int index
                    required property string modelData

                    text: modelData
                    onClicked: View.openLink(index)
                }
            }
        }
    }
}
