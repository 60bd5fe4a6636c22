// What a control without a text says of itself while the pointer rests on it. Above it, where no choices are.
import QtQuick
import QtQuick.Templates as T
import orvo.settings

T.ToolTip {
    id: tip

    delay: 700
    horizontalPadding: 9
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    margins: 6
    verticalPadding: 5
    x: (parent.width - width) / 2
    y: -height - 6

    background: PopupPanel {
        radius: 6
    }
    contentItem: BodyText {
        font.pixelSize: Theme.captionSize
        spoken: false
        text: tip.text
    }
}
