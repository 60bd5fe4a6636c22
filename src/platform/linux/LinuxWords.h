// Orvo's words on Linux, where the panel is Xfce's. A value; any thread.
#pragma once

#include "platform/Words.h"

namespace orvo {

inline constexpr Words linuxWords{
    .system = "Linux",
    .onThisComputer = "ON THIS COMPUTER",
    .choicesStayHere = "Your choices stay on this computer",
    .builtForTitle = "Built for Xfce on X11",
    .builtForDetail =
        "Orvo uses the panel’s protocol for tray icons, which may change with system updates. Each choice "
        "applies to all icons from one app. Some system extras may be unavailable while icons are hidden; "
        "quitting Orvo restores the bar.",
    .compatibilityResearch = "Linux compatibility research",
    .backendAvailable = "The panel’s protocol for tray icons is available.",
    .backendMissing = "Orvo’s agent does not manage the tray. Icons will remain visible.",
    .unsupportedTitle = "Orvo’s agent does not manage the tray",
    .unsupportedDetail =
        "All icons remain visible. Where the panel was there first, let the agent take over now, which restarts "
        "the panel’s tray and nothing else, or log in again.",
    .unsupportedHint = "Your icons remain visible on this desktop.",
    .takeOver = "Take Over",
    .takesOver = "Taking Over…",
    .notTakenOver = "Orvo could not take over the tray. ",
    .nothingManaged = "Orvo lists them once its agent manages the tray.",
    // No line ends within a path: U+2060 forbids it.
    .installAdvice =
        "Orvo hides icons only from an Applications folder. Run packaging/\u2060linux/\u2060install, or move Orvo.app "
        "to ~/\u2060Applications, then open that copy.",
    .installMessage = "Install Orvo in an Applications folder and open that copy to hide icons.",
    .accessibilityPage = "Settings → Accessibility",
    .accessibilityAdvice =
        "Turn on assistive technologies in Settings → Accessibility to find icons and keep system "
        "controls usable.",
    .nothingFound = "Open an app with a menu bar icon, then use Refresh. System controls are kept visible.",
    .systemControls =
        "Clicking a clock, volume, or other control of the panel’s own reveals your icons before opening it. Your "
        "icons then stay visible until you hide them again.",
    .noControls =
        "Orvo found no clock or other control in the panel. Add one, or start the panel anew, then refresh the icon "
        "list.",
    .noControlsHint = "Add a clock or another control to the panel, then refresh the icon list.",
    .hidingUnconfirmed = "The menu bar agent did not confirm hiding. All icons have been restored.",
    .allowLoginItem = "Allow Orvo in Settings → Session and Startup → Application Autostart.",
    .couldNotOpen = "Nothing on this computer opened ",
    .notTrusted = "switched off",
    .applicationRegistry = "Desktop entry path",
    .shortcut = "Ctrl Alt Super B",
    .shortcutSigns = "Ctrl Alt Super B",
    .spokenShortcut = "Control Alt Super B",
};

}  // namespace orvo
