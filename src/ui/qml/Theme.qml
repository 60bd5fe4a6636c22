// The colours, type scale and lengths of movement that everything here is painted with, for the
// desktop's present appearance.
pragma Singleton
import QtQuick
import orvo.settings

QtObject {
    readonly property bool dark: DesktopLook.isDark
    // Milliseconds.
    readonly property int movement: DesktopLook.reducesMotion ? 0 : 130

    // The type scale, in logical pixels.
    readonly property int titleSize: 24
    readonly property int bodySize: 13
    readonly property int smallSize: 12
    readonly property int captionSize: 11
    // Of what heads a row or a card.
    readonly property int titleWeight: DesktopLook.titleWeight
    // Wider, a name and its choice would lose sight of each other.
    readonly property int contentWidth: 820

    readonly property color window: dark ? "#1E1F21" : "#F5F5F6"
    readonly property color column: dark ? "#26282A" : "#EBEDEE"
    readonly property color card: dark ? "#27282B" : "#FFFFFF"
    readonly property color popup: dark ? "#2B2D30" : "#FFFFFF"
    readonly property color text: dark ? "#F1F2F3" : "#1C1D1F"
    readonly property color secondary: dark ? "#ADB0B5" : "#585B61"
    readonly property color tertiary: dark ? "#989CA2" : "#65696F"
    readonly property color attention: dark ? "#FFA33A" : "#C95F06"

    // The one accent. Symbols, marks and rings ask for a contrast of 3 with what they stand on, which it has: 3.1 on
    // the guide's tile and 3.3 on a card in the dark, 3.5 on the tile and 4.5 on a card in the light.
    readonly property color orvoAccent: Qt.rgba(0.12, 0.52, 0.48, 1)
    // Text asks for 4.5. On the selected page's ground the accent has 3.4 in the light and 2.9 in the dark, this shade
    // 4.6 and 4.7.
    readonly property color accentText: dark ? "#5EA7A0" : "#196D64"
    // White text on the accent has 4.49, on these shades 4.53, 5.10 and 5.91.
    readonly property color accentFill: "#1E8479"
    readonly property color accentFillHover: "#1B7B71"
    readonly property color accentFillPressed: "#187067"
    readonly property color accentContrast: "#FFFFFF"
    readonly property color selection: Qt.alpha(orvoAccent, 0.11)
    readonly property color setupFill: Qt.alpha(orvoAccent, 0.055)
    readonly property color setupOutline: Qt.alpha(orvoAccent, 0.12)
    readonly property color guideTile: Qt.alpha(orvoAccent, 0.09)
    // In the dark the accent has 2.9 on a row under the pointer, 2.5 on a pressed one, and across their pickers' tracks
    // 2.7 and 2.3; this shade 4.6, 3.9, 4.3 and 3.8.
    readonly property color focusRing: dark ? accentText : orvoAccent
    readonly property color textSelection: Qt.alpha(orvoAccent, 0.3)

    // How much is left of a control that cannot be used.
    readonly property real disabled: 0.45

    readonly property color fill: Qt.alpha(text, 0.035)
    readonly property color badge: Qt.alpha(text, 0.045)
    readonly property color hover: Qt.alpha(text, 0.05)
    readonly property color quietStep: Qt.alpha(text, 0.06)
    readonly property color quietButton: Qt.alpha(text, 0.14)
    readonly property color track: Qt.alpha(text, 0.07)
    readonly property color divider: Qt.alpha(text, 0.09)
    readonly property color outline: Qt.alpha(text, 0.1)
    readonly property color pressed: Qt.alpha(text, 0.1)
    readonly property color thumb: dark ? "#5A5D62" : "#FFFFFF"
    readonly property color switchOff: dark ? "#72767C" : "#8A8E94"
    readonly property color control: dark ? "#3A3C40" : "#FFFFFF"
    // One of the layers of which a shadow is made.
    readonly property color shadow: dark ? "#0D000000" : "#05000000"
    readonly property color controlOutline: dark ? "#1EFFFFFF" : "#26000000"
}
