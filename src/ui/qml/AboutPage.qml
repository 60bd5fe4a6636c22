// What Orvo is, how it stands on this system, and what it does with what it knows.
import QtQuick
import orvo.settings

ScrollPage {
    teller: told

    Row {
        spacing: 13
        // The icon's drawing keeps a sixteenth to its place's edge.
        x: -icon.size / 16

        OrvoIcon {
            id: icon

            anchors.verticalCenter: parent.verticalCenter
            size: 58
        }
        Column {
            anchors.verticalCenter: parent.verticalCenter
            spacing: 1

            BodyText {
                font.letterSpacing: -0.2
                font.pixelSize: Theme.titleSize
                font.weight: Font.DemiBold
                text: View.texts.name
                Accessible.role: Accessible.Heading
            }
            DetailText {
                text: View.texts.aboutVersion
            }
            DetailText {
                text: View.texts.aboutTagline
            }
        }
    }
    SettingsSection {
        title: View.texts.onThisComputer

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
            onClicked: View.perform("copyDiagnostics")
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
            text: View.texts.builtForTitle
        }
        DetailText {
            text: View.texts.builtForDetail
            width: parent.width
            wrapMode: Text.Wrap
        }
        Flow {
            spacing: 18
            topPadding: 5
            width: parent.width

            Repeater {
                model: View.linkLabels

                WebLink {
                    required property int index
                    required property string modelData

                    text: modelData
                    onClicked: View.perform("openLink", index)
                }
            }
        }
    }
    MessageView {
        id: told

        width: parent.width
    }
}
