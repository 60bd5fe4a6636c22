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

    readonly property color window: dark ? "#1E1F21" : "#F5F5F6"
    readonly property color column: dark ? "#26282A" : "#EBEDEE"
    readonly property color card: dark ? "#27282B" : "#FFFFFF"
    readonly property color popup: dark ? "#303235" : "#FFFFFF"
    readonly property color text: dark ? "#F1F2F3" : "#1C1D1F"
    readonly property color secondary: dark ? "#ADB0B5" : "#585B61"
    readonly property color tertiary: dark ? "#989CA2" : "#65696F"
    readonly property color attention: dark ? "#FFA33A" : "#C95F06"

    // The one accent, and its shades: where it is read, drawn on a background, or laid under white text.
    readonly property color orvoAccent: Qt.rgba(0.12, 0.52, 0.48, 1)
    readonly property color accentText: dark ? "#63C9BC" : "#13625A"
    readonly property color accentSymbol: dark ? "#4FB8AB" : orvoAccent
    readonly property color accentFill: "#1B7B71"
    readonly property color accentFillHover: "#187269"
    readonly property color accentFillPressed: "#15665E"
    readonly property color accentContrast: "#FFFFFF"
    // On dark ground the given strengths of the accent hardly show.
    readonly property color selection: Qt.alpha(orvoAccent, dark ? 0.26 : 0.11)
    readonly property color setupFill: Qt.alpha(orvoAccent, dark ? 0.12 : 0.055)
    readonly property color setupOutline: Qt.alpha(orvoAccent, dark ? 0.35 : 0.12)
    readonly property color guideTile: Qt.alpha(orvoAccent, dark ? 0.24 : 0.09)
    readonly property color focusRing: dark ? accentSymbol : Qt.alpha(orvoAccent, 0.85)
    readonly property color textSelection: Qt.alpha(orvoAccent, 0.3)

    readonly property color fill: Qt.alpha(text, 0.035)
    readonly property color badge: Qt.alpha(text, 0.045)
    readonly property color hover: Qt.alpha(text, 0.05)
    readonly property color quietStep: Qt.alpha(text, 0.06)
    readonly property color track: Qt.alpha(text, 0.07)
    readonly property color divider: Qt.alpha(text, 0.09)
    readonly property color outline: Qt.alpha(text, 0.1)
    readonly property color pressed: Qt.alpha(text, 0.1)
    readonly property color thumb: dark ? "#5A5D62" : "#FFFFFF"
    readonly property color switchOff: dark ? "#72767C" : "#8A8E94"
    readonly property color control: dark ? "#3A3C40" : "#FFFFFF"
    readonly property color controlOutline: dark ? "#1EFFFFFF" : "#26000000"
}
