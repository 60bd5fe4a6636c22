// A page's title above its subtitle.
import QtQuick
import orvo.settings

Column {
    required property string title
    required property string subtitle

    spacing: 2

    BodyText {
        font.letterSpacing: -0.2
        font.pixelSize: Theme.titleSize
        font.weight: Font.DemiBold
        text: parent.title
        Accessible.role: Accessible.Heading
    }
    BodyText {
        color: Theme.secondary
        text: parent.subtitle
    }
}
