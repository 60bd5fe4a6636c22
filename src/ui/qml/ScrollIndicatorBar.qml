// A slim scroll bar, there whenever there is more than fits. Its contrast is 3.2 at the least: on a page, in the light.
import QtQuick
import QtQuick.Templates as T
import orvo.settings

T.ScrollBar {
    id: bar

    implicitHeight: 11
    implicitWidth: 11
    minimumSize: 0.06
    padding: 3
    policy: T.ScrollBar.AlwaysOn
    Accessible.ignored: true

    contentItem: RoundedRectangle {
        color: Theme.secondary
        opacity: bar.pressed ? 0.9 : bar.hovered ? 0.8 : 0.7
        radius: 3
        visible: bar.size < 1
    }
}
