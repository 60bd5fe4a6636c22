// How many applications are marked, what the button will do, and the button.
import QtQuick
import QtQuick.Layouts
import orvo.settings

RowLayout {
    spacing: 20

    ColumnLayout {
        spacing: 1

        BodyText {
            Layout.fillWidth: true
            elide: Text.ElideRight
            font.weight: Font.DemiBold
            text: View.actionTitle
        }
        DetailText {
            Layout.fillWidth: true
            text: View.actionHint
            wrapMode: Text.Wrap
        }
    }
    ProminentButton {
        enabled: View.primaryButton.enabled
        name: View.primaryButton.accessibilityLabel
        symbol: View.primaryButton.symbol
        text: View.primaryButton.label
        toolTip: View.primaryButton.toolTip
        onClicked: View.perform("primary")
    }
}
