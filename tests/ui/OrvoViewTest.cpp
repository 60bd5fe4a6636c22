#include "ui/OrvoView.h"

#include "platform/linux/LinuxWords.h"
#include "support/World.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace orvo {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using Value = OrvoView::Value;

// What is missing before the launch, the steps after it, and some of the values that result, as a record.
struct Situation {
  const char *missing, *steps, *said;
};

// The Mac's texts to the letter, each where something calls for it.
const Situation situations[] = {
    {"elsewhere noframework untrusted taken", "", R"json({
      "guidance": "unsupported", "actionTitle": "0 apps selected to hide", "searchEnabled": false,
      "actionHint": "Your icons remain visible on this macOS version.", "showsListFooter": false,
      "message": "Install Orvo in Applications and open that copy to keep its menu bar arrow visible.",
      "unsupportedCard": {"title": "This macOS build is not supported",
       "detail": "Orvo cannot manage icons on this macOS version. All icons remain visible."},
      "emptyState": {"title": "Your apps will appear here", "offersClearSearch": false,
       "detail": "Allow Accessibility above, then choose which apps to orvo away."},
      "shortcutDetail": "This shortcut is in use. Orvo’s menu bar arrow is still available.",
      "privacyCard": {"title": "Your choices stay on this Mac"},
      "linkLabels": ["How Orvo is built", "macOS compatibility research"],
      "texts": {"onThisComputer": "ON THIS MAC", "builtForTitle": "Built for macOS 27", "shortcutSigns": "⌃ ⌥ ⌘ B",
       "builtForDetail": "Orvo uses a private macOS menu bar API that may change with system updates. Each choice applies to all icons from one app. Some system extras may be unavailable while icons are hidden; quitting Orvo restores the bar.",
       "shortcut": "Control Option Command B", "versionLine": "Orvo 0.2.0", "aboutVersion": "Version 0.2.0"},
      "diagnostics": [
       {"title": "macOS", "value": "Version 27.0 (Build 26A100)", "marked": false, "ready": false},
       {"title": "Installed application", "value": "Open from Applications", "marked": true, "ready": false},
       {"title": "Menu bar compatibility", "value": "Unavailable", "marked": true, "ready": false},
       {"title": "Accessibility", "value": "Permission required", "marked": true, "ready": false},
       {"title": "System controls", "value": "Not ready — refresh icons", "marked": true, "ready": false},
       {"title": "Keyboard shortcut", "value": "In use by another app", "marked": true, "ready": false}]})json"},
    {"elsewhere untrusted", "search", R"json({
      "guidance": "setup", "actionHint": "Open the Applications copy to enable hiding.",
      "setupSteps": [
       {"number": "1", "title": "Install in Applications", "complete": false,
        "accessibilityLabel": "Install in Applications: required"},
       {"number": "2", "title": "Allow Accessibility", "complete": false,
        "accessibilityLabel": "Allow Accessibility: required"}],
      "setupAdvice": {"title": "Give Orvo a permanent home", "button": "Open Applications",
       "detail": "Move Orvo.app to Applications, then open that copy. This keeps its menu bar arrow available."},
      "emptyState": {"symbol": "hand.raised", "offersClearSearch": false}})json"},
    {"untrusted", "", R"json({
      "guidance": "setup", "actionHint": "Allow Accessibility to get started.", "message": "",
      "setupAdvice": {"title": "One permission, then you’re ready", "button": "Open Settings…",
       "detail": "Turn on Orvo in Privacy & Security → Accessibility to find icons and keep system controls usable."}})json"},
    {"", "dropone", R"json({
      "guidance": "revealGuide", "actionHint": "Choose Hide next to an app to get started.",
      "actionTitle": "0 apps selected to hide", "showsListFooter": true, "listCount": "2 of 2 apps",
      "statusLine": {"text": "Apps keep running"}, "stateBadge": {"accentDot": false, "text": "All visible"},
      "primaryButton": {"label": "Hide selected", "symbol": "chevron.right", "enabled": false,
       "accessibilityLabel": "Hide selected icons", "toolTip": "Hide selected icons"},
      "rehideOptions": ["Never", "After 5 seconds", "After 10 seconds", "After 30 seconds"]})json"},
    {"", "", R"json({"actionHint": "Hiding an icon keeps its app running.",
      "actionTitle": "1 app selected to hide", "primaryButton": {"enabled": true}})json"},
    {"", "hide", R"json({
      "actionHint": "Click the left arrow to bring your icons back.", "actionTitle": "Updating your menu bar…",
      "stateBadge": {"inProgress": true, "accentDot": false, "text": "Updating"}, "pickersEnabled": false,
      "statusLine": {"text": "Apps keep running"},
      "primaryButton": {"label": "", "symbol": "chevron.left", "enabled": true,
       "accessibilityLabel": "Reveal hidden icons", "toolTip": "Reveal hidden icons · ⌃⌥⌘B"}})json"},
    {"", "hide yes", R"json({
      "stateBadge": {"inProgress": false, "accentDot": true, "text": "Orvoed away"}, "pickersEnabled": true,
      "statusLine": {"text": "Icons orvoed away"}, "actionTitle": "1 app selected to hide"})json"},
    {"notaps", "", R"json({"actionHint": "System controls are not ready. Refresh the icon list.",
      "primaryButton": {"enabled": false}})json"},
    {"", "search", R"json({"listCount": "0 of 2 apps", "showsListFooter": true,
      "emptyState": {"symbol": "magnifyingglass", "title": "No matching apps", "offersClearSearch": true,
       "detail": "Try a different app name or clear your search."}})json"},
    {"", "search refresh", R"json({"isScanning": true,
      "emptyState": {"title": "Finding menu bar icons…", "detail": "This usually takes a moment."}})json"},
    {"nocontrols", "", R"json({"showsListFooter": false,
      "emptyState": {"title": "No app icons found", "offersClearSearch": false,
       "detail": "Open an app with a menu bar icon, then use Refresh. macOS system controls are kept visible."}})json"},
    {"", "delay30", R"json({"rehideOption": 3, "rehideText": "After 30 seconds"})json"},
    {"", "delay1", R"json({"rehideOption": -1, "rehideText": "After 1 second"})json"},
    {"", "delay-5", R"json({"rehideOption": -1, "rehideText": "Never"})json"},
};

TEST(OrvoViewTest, EverySituationIsWorded) {
  for (const Situation& situation : situations) {
    const auto saidWith = [&](const Words& words) {
      World world([&](MemoryPlatform& memory) {
        World::play(memory, situation.missing);
        memory.words = words;
      });
      const OrvoView& view = world.view();
      world.play(situation.steps);
      return view.values();
    };
    const Value said = saidWith(macWords);
    Value expected = said;
    expected.merge_patch(Value::parse(situation.said));
    EXPECT_EQ(Value::diff(said, expected), Value::array()) << situation.said;
    const std::string elsewhere = saidWith(linuxWords).dump();
    for (const char* foreign : {"Mac", "macOS", "MAC", "⌘", "Command", "System Settings", "Privacy &"})
      EXPECT_THAT(elsewhere, Not(HasSubstr(foreign)));
  }
}

TEST(OrvoViewTest, TheBundlesInformationCountsWhereItIsAText) {
  using Info = std::map<std::string, InfoValue, std::less<>>;
  const Info without{{"CFBundleShortVersionString", 1.5}, {"OrvoProjectAddress", "share/doc/a b.md"}};
  const Info whole{{"CFBundleShortVersionString", "1.4"}, {"OrvoProjectAddress", "https://example.org/built"}};
  for (const auto& [info, version, address] :
       {std::tuple{without, "Orvo 0.2.0", "file:///Applications/Orvo.app/share/doc/a%20b.md"},
        std::tuple{whole, "Orvo 1.4", "https://example.org/built"}}) {
    World world([&](MemoryPlatform& memory) { memory.bundle.info = info; });
    EXPECT_EQ(world.view().values()["texts"]["versionLine"], version);
    world.view().perform("openLink", 0);
    EXPECT_THAT(world.memory.workspace.openedURLs, ElementsAre(address));
  }
}

TEST(OrvoViewTest, TheSetupButtonAsksForWhatIsMissingOnce) {
  World world("untrusted");
  world.view().perform("setup", nullptr);
  EXPECT_EQ(world.memory.accessibility.prompts, 1);
  EXPECT_THAT(world.memory.workspace.openedURLs, ElementsAre(HasSubstr("Privacy_Accessibility")));
}

TEST(OrvoViewTest, WhatNothingOpenedIsToldOnItsPageUntilThatIsLeft) {
  for (const char* const word : {linuxWords.couldNotOpen, macWords.couldNotOpen}) {
    World world("elsewhere");
    OrvoView& view = world.view();
    world.memory.words.couldNotOpen = word;
    const auto message = [&] { return view.values()["message"]; };
    const Value before = message();
    view.perform("setup", nullptr);
    EXPECT_THAT(world.memory.workspace.openedURLs, ElementsAre("file:///Applications/"));
    world.memory.workspace.opensNothing = true;
    view.perform("setup", nullptr);
    EXPECT_EQ(world.memory.workspace.openedURLs.back(), "file:///home/user/Applications/");
    view.perform("page", 0);  // which shows already
    EXPECT_EQ(message() == before, word == nullptr);
    for (const auto& [page, left] : {std::pair{2, Value("")}, {0, before}, {2, Value("")}}) {
      view.perform("page", page);
      EXPECT_EQ(message(), left);
    }
    view.perform("openLink", 1);
    EXPECT_EQ(message() == Value(""), word == nullptr);
    world.memory.workspace.opensNothing = false;
    view.perform("openLink", 1);
    EXPECT_EQ(message(), "");
  }
}

TEST(OrvoViewTest, TheSevenCopiedLinesAreConfirmedForTwoSecondsAfterTheFirstPress) {
  World world("elsewhere noframework untrusted taken");
  ManualMainQueue& queue = world.memory.mainQueue;
  auto view = std::make_unique<OrvoView>(world.model->shared_from_this(), world.memory.platform);
  int announced = 0;
  view->willChange.observe([&] { ++announced; });
  view->perform("copyDiagnostics", nullptr);
  EXPECT_EQ(world.memory.pasteboard.text,
            "Orvo 0.2.0\nmacOS: Version 27.0 (Build 26A100)\nInstalled application: not ready\n"
            "Menu bar compatibility: unavailable\nAccessibility: not enabled\nSystem controls: not ready\n"
            "Keyboard shortcut: unavailable");
  queue.advance(OrvoView::copiedDuration / 2);
  view->perform("copyDiagnostics", nullptr);
  EXPECT_EQ(view->values()["copyButton"]["text"], "Copied");
  queue.advance(OrvoView::copiedDuration / 2);
  EXPECT_EQ(view->values()["copyButton"]["text"], "Copy system details");
  EXPECT_EQ(announced, 3);
  view.reset();
  queue.advance(OrvoView::copiedDuration);
  world.model->searchText = "nobody listens";
}

}  // namespace

}  // namespace orvo
