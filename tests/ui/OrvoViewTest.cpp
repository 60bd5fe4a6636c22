#include "ui/OrvoView.h"

#include "model/OrvoModel.h"
#include "platform/linux/LinuxWords.h"
#include "support/MemoryPlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace orvo {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using Value = OrvoView::Value;

struct Desk {
  explicit Desk(const std::function<void(MemoryPlatform&)>& prepare = [](MemoryPlatform&) {}) {
    prepare(memory);
    model = OrvoModel::make(memory.platform);
    model->start();
    memory.settle();
    view = std::make_unique<OrvoView>(model, memory.platform);
  }
  ~Desk() { model->stop(); }

  Value value(const char* path) const { return view->values().at(Value::json_pointer(path)); }
  void perform(const char* action, const Value& argument = nullptr) const { view->perform(action, argument); }

  MemoryPlatform memory;
  std::shared_ptr<OrvoModel> model;
  std::unique_ptr<OrvoView> view;
};

using Prepare = std::function<void(MemoryPlatform&)>;

void everythingRight(MemoryPlatform& memory) { memory.showItems({"org.example.one"}); }
void untrusted(MemoryPlatform& memory) { memory.accessibility.trusted = false; }
void outsideApplications(MemoryPlatform& memory) {
  untrusted(memory);
  memory.bundle.bundlePath = "/tmp/Orvo.app";
}
void nothingRight(MemoryPlatform& memory) {
  outsideApplications(memory);
  memory.framework.loads = false;
  memory.hotKeys.registerStatus = -9878;
}
void withoutVersion(MemoryPlatform& memory) { memory.bundle.info.clear(); }
Prepare withVersion(const InfoValue& version) {
  return [=](MemoryPlatform& memory) { memory.bundle.info["CFBundleShortVersionString"] = version; };
}
Prepare withDelay(int seconds) {
  return [=](MemoryPlatform& memory) {
    everythingRight(memory);
    memory.userDefaults.datas["Quillet.Preferences.v1"] =
        R"({"rules":{"org.example.one":"hidden"},"autoRehideSeconds":)" + std::to_string(seconds) + "}";
  };
}
void withoutTap(MemoryPlatform& memory) {
  everythingRight(memory);
  memory.eventTaps.creationFails = true;
}

void nothing(Desk&) {}
void choose(Desk& desk) { desk.perform("hide", "org.example.one"); }
void hide(Desk& desk) {
  choose(desk);
  desk.perform("primary");
}
void hideWholly(Desk& desk) {
  hide(desk);
  desk.memory.framework.answer(0);
  desk.memory.settle();
}
void chooseNever(Desk& desk) { desk.perform("rehide", 0); }
void scan(Desk& desk) {
  desk.memory.scanExecutor.holds = true;
  desk.perform("refresh");
}
void search(Desk& desk) { desk.perform("search", " "); }
void searchAndScan(Desk& desk) {
  search(desk);
  scan(desk);
}

struct Situation {
  Prepare prepare;
  void (*act)(Desk&);
  // Some of the values, as a record.
  const char* said;
};

// The Mac's texts to the letter, each where something calls for it.
const Situation situations[] = {
    {nothingRight, nothing, R"json({
      "guidance": "unsupported", "actionTitle": "0 apps selected to hide", "searchEnabled": false,
      "actionHint": "Your icons remain visible on this macOS version.", "showsListFooter": false,
      "message": "Install Orvo in Applications and open that copy to keep its menu bar arrow visible.",
      "unsupportedCard": {"title": "This macOS build is not supported", "attention": true,
       "detail": "Orvo cannot manage icons on this macOS version. All icons remain visible."},
      "emptyState": {"symbol": "hand.raised", "title": "Your apps will appear here", "offersClearSearch": false,
       "detail": "Allow Accessibility above, then choose which apps to orvo away."},
      "shortcutAvailable": false,
      "shortcutDetail": "This shortcut is in use. Orvo’s menu bar arrow is still available.",
      "privacyCard": {"title": "Your choices stay on this Mac"},
      "linkLabels": ["How Orvo is built", "macOS compatibility research"],
      "texts": {"onThisComputer": "ON THIS MAC", "builtForTitle": "Built for macOS 27", "shortcutSigns": "⌃ ⌥ ⌘ B",
       "builtForDetail": "Orvo uses a private macOS menu bar API that may change with system updates. Each choice applies to all icons from one app. Some system extras may be unavailable while icons are hidden; quitting Orvo restores the bar.",
       "shortcut": "Control Option Command B", "versionLine": "Orvo 0.2.0"},
      "diagnostics": [
       {"title": "macOS", "value": "Version 27.0 (Build 26A100)", "marked": false, "ready": false},
       {"title": "Installed application", "value": "Open from Applications", "marked": true, "ready": false},
       {"title": "Menu bar compatibility", "value": "Unavailable", "marked": true, "ready": false},
       {"title": "Accessibility", "value": "Permission required", "marked": true, "ready": false},
       {"title": "System controls", "value": "Not ready — refresh icons", "marked": true, "ready": false},
       {"title": "Keyboard shortcut", "value": "In use by another app", "marked": true, "ready": false}]})json"},
    {outsideApplications, search, R"json({
      "guidance": "setup", "actionHint": "Open the Applications copy to enable hiding.",
      "setupSteps": [
       {"number": "1", "title": "Install in Applications", "complete": false,
        "accessibilityLabel": "Install in Applications: required"},
       {"number": "2", "title": "Allow Accessibility", "complete": false,
        "accessibilityLabel": "Allow Accessibility: required"}],
      "setupAdvice": {"title": "Give Orvo a permanent home", "button": "Open Applications",
       "detail": "Move Orvo.app to Applications, then open that copy. This keeps its menu bar arrow available."},
      "emptyState": {"title": "Your apps will appear here", "offersClearSearch": false}})json"},
    {untrusted, nothing, R"json({
      "guidance": "setup", "actionHint": "Allow Accessibility to get started.", "message": "",
      "setupAdvice": {"title": "One permission, then you’re ready", "button": "Open Settings…",
       "detail": "Turn on Orvo in Privacy & Security → Accessibility to find icons and keep system controls usable."}})json"},
    {everythingRight, nothing, R"json({
      "guidance": "revealGuide", "actionHint": "Choose Hide next to an app to get started.", "page": 0,
      "actionTitle": "0 apps selected to hide", "showsListFooter": true, "listCount": "1 of 1 apps",
      "statusLine": {"symbol": "checkmark.circle", "text": "Apps keep running"},
      "stateBadge": {"inProgress": false, "accentDot": false, "text": "All visible"},
      "primaryButton": {"label": "Hide selected", "symbol": "chevron.right", "enabled": false,
       "accessibilityLabel": "Hide selected icons", "toolTip": "Hide selected icons"},
      "rehideOptions": ["Never", "After 5 seconds", "After 10 seconds", "After 30 seconds"]})json"},
    {everythingRight, choose, R"json({
      "actionHint": "Hiding an icon keeps its app running.", "actionTitle": "1 app selected to hide",
      "primaryButton": {"enabled": true}})json"},
    {everythingRight, hide, R"json({
      "actionHint": "Click the left arrow to bring your icons back.", "actionTitle": "Updating your menu bar…",
      "stateBadge": {"inProgress": true, "accentDot": false, "text": "Updating"}, "pickersEnabled": false,
      "statusLine": {"symbol": "checkmark.circle", "text": "Apps keep running"},
      "primaryButton": {"label": "", "symbol": "chevron.left", "enabled": true,
       "accessibilityLabel": "Reveal hidden icons", "toolTip": "Reveal hidden icons · ⌃⌥⌘B"}})json"},
    {everythingRight, hideWholly, R"json({
      "stateBadge": {"inProgress": false, "accentDot": true, "text": "Orvoed away"}, "pickersEnabled": true,
      "statusLine": {"symbol": "chevron.left", "text": "Icons orvoed away"}, "actionTitle": "1 app selected to hide"})json"},
    {withoutTap, choose, R"json({
      "actionHint": "System controls are not ready. Refresh the icon list.", "primaryButton": {"enabled": false}})json"},
    {everythingRight, search, R"json({
      "listCount": "0 of 1 apps", "showsListFooter": true,
      "emptyState": {"symbol": "magnifyingglass", "title": "No matching apps", "offersClearSearch": true,
       "detail": "Try a different app name or clear your search."}})json"},
    {everythingRight, searchAndScan, R"json({
      "isScanning": true, "emptyState": {"title": "Finding menu bar icons…", "offersClearSearch": true,
       "detail": "This usually takes a moment."}})json"},
    {withDelay(30), nothing, R"json({"rehideOption": 3, "rehideText": "After 30 seconds"})json"},
    {withDelay(1), nothing, R"json({"rehideOption": -1, "rehideText": "After 1 second"})json"},
    {withDelay(-5), nothing, R"json({"rehideOption": -1, "rehideText": "Never"})json"},
    {withDelay(45), chooseNever, R"json({"rehideOption": 0, "actionTitle": "1 app selected to hide"})json"},
    {withVersion(std::string("1.4")), nothing,
     R"json({"texts": {"versionLine": "Orvo 1.4", "aboutVersion": "Version 1.4"}})json"},
    {withVersion(1.5), nothing, R"json({"texts": {"versionLine": "Orvo 0.2.0"}})json"},
    {withoutVersion, nothing, R"json({
      "texts": {"versionLine": "Orvo 0.2.0"}, "showsListFooter": false,
      "emptyState": {"title": "No app icons found", "offersClearSearch": false,
       "detail": "Open an app with a menu bar icon, then use Refresh. macOS system controls are kept visible."}})json"},
};

TEST(OrvoViewTest, EverySituationIsWorded) {
  for (const Situation& situation : situations) {
    const auto saidWith = [&](const Words& words) {
      Desk desk([&](MemoryPlatform& memory) {
        situation.prepare(memory);
        memory.words = words;
      });
      situation.act(desk);
      return desk.view->values();
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

TEST(OrvoViewTest, TheSetupButtonOpensWhatItsTextSpeaksOf) {
  const Desk outside(outsideApplications);
  outside.perform("setup");
  EXPECT_THAT(outside.memory.workspace.openedURLs, ElementsAre("file:///Applications/"));
  EXPECT_EQ(outside.memory.accessibility.prompts, 0);
  const Desk inside(untrusted);
  inside.perform("setup");
  EXPECT_EQ(inside.memory.accessibility.prompts, 1);
  EXPECT_THAT(inside.memory.workspace.openedURLs, ElementsAre(HasSubstr("Privacy_Accessibility")));
}

TEST(OrvoViewTest, WhatNothingOpenedIsToldOnItsPageUntilThatIsLeft) {
  for (const char* const word : {linuxWords.couldNotOpen, macWords.couldNotOpen}) {
    Desk desk(outsideApplications);
    desk.memory.words.couldNotOpen = word;
    desk.memory.workspace.opensNothing = true;
    const Value before = desk.value("/message");
    desk.perform("setup");
    EXPECT_EQ(desk.memory.workspace.openedURLs.back(), "file:///home/user/Applications/");
    EXPECT_EQ(desk.value("/message") == before, word == nullptr);
    desk.perform("page", 0);
    EXPECT_EQ(desk.value("/message") == before, word == nullptr) << "the page that shows already";
    desk.perform("page", 2);
    EXPECT_EQ(desk.value("/message"), "");
    desk.perform("page", 0);
    EXPECT_EQ(desk.value("/message"), before);
    desk.perform("page", 2);
    for (const bool opens : {true, false}) {
      desk.memory.workspace.opensNothing = !opens;
      desk.perform("openLink", 1);
      EXPECT_EQ(desk.value("/message") == Value(""), opens || word == nullptr);
    }
  }
}

TEST(OrvoViewTest, ALinkLeadsIntoTheBundleUntilItHasAnAddress) {
  Desk desk;
  desk.memory.bundle.info["OrvoProjectAddress"] = std::string("share/doc/a b.md");
  desk.memory.bundle.info["OrvoResearchAddress"] = std::string("https://example.org/research");
  for (const int link : {0, 1}) desk.perform("openLink", link);
  EXPECT_THAT(desk.memory.workspace.openedURLs,
              ElementsAre("file:///Applications/Orvo.app/share/doc/a%20b.md", "https://example.org/research"));
}

TEST(OrvoViewTest, TheSevenCopiedLinesAreConfirmedForTwoSecondsAfterTheFirstPress) {
  Desk desk(nothingRight);
  desk.perform("copyDiagnostics");
  EXPECT_EQ(desk.memory.pasteboard.text,
            "Orvo 0.2.0\nmacOS: Version 27.0 (Build 26A100)\nInstalled application: not ready\n"
            "Menu bar compatibility: unavailable\nAccessibility: not enabled\nSystem controls: not ready\n"
            "Keyboard shortcut: unavailable");
  desk.memory.mainQueue.advance(OrvoView::copiedDuration / 2);
  desk.perform("copyDiagnostics");
  EXPECT_EQ(desk.value("/copyButton/text"), "Copied");
  desk.memory.mainQueue.advance(OrvoView::copiedDuration / 2);
  EXPECT_EQ(desk.value("/copyButton/text"), "Copy system details");
  desk.view.reset();
  desk.memory.mainQueue.advance(OrvoView::copiedDuration);
}

TEST(OrvoViewTest, EveryChangeIsAnnouncedUntilTheObserverIsGone) {
  Desk desk;
  int announced = 0;
  const auto token = desk.view->willChange.observe([&] { ++announced; });
  desk.view->page = OrvoView::Page::about;
  desk.model->searchText = "news";
  desk.perform("copyDiagnostics");
  EXPECT_EQ(announced, 3);
  desk.view->willChange.remove(token);
  desk.model->searchText = "more";
  EXPECT_EQ(announced, 3);
  desk.view.reset();
  desk.model->searchText = "nobody listens";
}

TEST(OrvoViewTest, PagesAreNamedByExactlyTheirLabels) {
  for (const OrvoView::Page page : OrvoView::allPages) {
    EXPECT_EQ(OrvoView::pageFromRawValue(OrvoView::rawValue(page)), page);
  }
  for (const char* other : {"", "menu bar", "Menu bar ", "icons"})
    EXPECT_EQ(OrvoView::pageFromRawValue(other), std::nullopt);
}

}  // namespace

}  // namespace orvo
