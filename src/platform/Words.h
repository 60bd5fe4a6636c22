// What Orvo says in words of the system that it runs on: its name, its settings and the signs of its keys.
// Plain texts in UTF-8 that live as long as the program; each system has one instance, which main.cpp picks.
#pragma once

namespace orvo {

struct Words {
  // The row of the system's version, on screen and in the copied details.
  const char* system;
  const char* onThisComputer;
  const char* choicesStayHere;
  const char* builtForTitle;
  const char* builtForDetail;
  const char* compatibilityResearch;

  const char* backendAvailable;
  const char* backendMissing;
  const char* unsupportedTitle;
  const char* unsupportedDetail;
  const char* unsupportedHint;
  // The button that has the menu bar's host manage the items of a panel that came first, and what stands before the
  // reason where it could not, and for the list meanwhile; null on a system without such panels.
  const char* takeOver;
  const char* takesOver;  // while it does
  const char* notTakenOver;
  const char* nothingManaged;
  // How Orvo comes into an Applications folder.
  const char* installAdvice;
  const char* installMessage;
  const char* accessibilityPage;
  const char* accessibilityAdvice;
  const char* nothingFound;
  const char* systemControls;
  // Where hiding is refused because no system control is known: the message, and the hint beside the button.
  const char* noControls;
  const char* noControlsHint;
  const char* hidingUnconfirmed;
  const char* allowLoginItem;
  // Before the path or address that nothing opened; null where that goes unsaid.
  const char* couldNotOpen;

  // The report of --diagnose.
  const char* notTrusted;
  const char* applicationRegistry;

  // The global shortcut: within a sentence, as separate signs, and as it is spoken.
  const char* shortcut;
  const char* shortcutSigns;
  const char* spokenShortcut;
};

inline constexpr Words macWords{
    .system = "macOS",
    .onThisComputer = "ON THIS MAC",
    .choicesStayHere = "Your choices stay on this Mac",
    .builtForTitle = "Built for macOS 27",
    .builtForDetail =
        "Orvo uses a private macOS menu bar API that may change with system updates. Each choice applies to "
        "all icons from one app. Some system extras may be unavailable while icons are hidden; quitting "
        "Orvo restores the bar.",
    .compatibilityResearch = "macOS compatibility research",
    .backendAvailable = "macOS 27 native concealment protocol is available.",
    .backendMissing = "This macOS build does not expose the expected menu bar protocol. Icons will remain visible.",
    .unsupportedTitle = "This macOS build is not supported",
    .unsupportedDetail = "Orvo cannot manage icons on this macOS version. All icons remain visible.",
    .unsupportedHint = "Your icons remain visible on this macOS version.",
    .takeOver = nullptr,
    .takesOver = nullptr,
    .notTakenOver = nullptr,
    .nothingManaged = nullptr,
    .installAdvice = "Move Orvo.app to Applications, then open that copy. This keeps its menu bar arrow available.",
    .installMessage = "Install Orvo in Applications and open that copy to keep its menu bar arrow visible.",
    .accessibilityPage = "Privacy & Security → Accessibility",
    .accessibilityAdvice =
        "Turn on Orvo in Privacy & Security → Accessibility to find icons and keep system controls usable.",
    .nothingFound = "Open an app with a menu bar icon, then use Refresh. macOS system controls are kept visible.",
    .systemControls =
        "Clicking a detected clock, Wi-Fi, or other system control reveals your icons before opening it. Your icons "
        "then stay visible until you hide them again.",
    .noControls = "System controls are not ready. Refresh the icon list after granting Accessibility.",
    .noControlsHint = "System controls are not ready. Refresh the icon list.",
    .hidingUnconfirmed = "macOS did not confirm hiding. All icons have been restored.",
    .allowLoginItem = "Allow Orvo in System Settings → General → Login Items.",
    .couldNotOpen = nullptr,
    .notTrusted = "not granted to this process",
    .applicationRegistry = "LaunchServices path",
    .shortcut = "⌃⌥⌘B",
    .shortcutSigns = "⌃ ⌥ ⌘ B",
    .spokenShortcut = "Control Option Command B",
};

}  // namespace orvo
