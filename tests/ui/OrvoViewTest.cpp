#include "ui/OrvoView.h"

#include "platform/linux/LinuxWords.h"
#include "support/World.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace orvo {

using ::testing::ElementsAre;
using Value = OrvoView::Value;

// What is missing before the launch, the steps after it, and what is decided by them, as a record.
using Situation = std::tuple<const char*, const char*, const char*>;
const Situation situations[] = {
    {"/Downloads/O noframework untrusted taken", "", R"json({"guidance": "unsupported", "searchEnabled": false,
      "showsListFooter": false, "emptyState": {"title": "Your apps will appear here", "offersClearSearch": false},
      "shortcutDetail": "This shortcut is in use. Orvo’s menu bar arrow is still available.",
      "actionHint": "Your icons remain visible on this macOS version."})json"},
    {"/Downloads/O untrusted", "search", R"json({"guidance": "setup", "setupAdvice": {"button": "Open Applications"},
      "message": "Install Orvo in Applications and open that copy to keep its menu bar arrow visible.",
      "emptyState": {"offersClearSearch": false}})json"},
    {"untrusted", "", R"json({"guidance": "setup", "setupAdvice": {"button": "Open Settings…"}})json"},
    {"notaps", "hide", R"json({"actionHint": "System controls are not ready. Refresh the icon list.",
      "message": "System controls are not ready. Refresh the icon list after granting Accessibility."})json"},
    {"nocontrols", "", R"json({"emptyState": {"title": "No app icons found", "detail":
        "Open an app with a menu bar icon, then use Refresh. macOS system controls are kept visible."}})json"},
    {"", "elsewhere settle", R"json({"guidance": "unsupported", "primaryButton": {"enabled": false}})json"},
    {"", "dropone", R"json({"guidance": "revealGuide", "actionTitle": "0 apps selected to hide",
      "statusLine": {"text": "Apps keep running"}, "stateBadge": {"accentDot": false, "text": "All visible"},
      "primaryButton": {"label": "Hide selected", "symbol": "chevron.right", "enabled": false}})json"},
    {"", "hide", R"json({"actionHint": "Click the left arrow to bring your icons back.", "pickersEnabled": false,
      "stateBadge": {"inProgress": true, "accentDot": false, "text": "Updating"},
      "primaryButton": {"label": "", "symbol": "chevron.left", "enabled": true}})json"},
    {"", "hide 8000ms", R"json({"message": "macOS did not confirm hiding. All icons have been restored."})json"},
    {"", "hide yes", R"json({"stateBadge": {"inProgress": false, "accentDot": true, "text": "Orvoed away"},
      "pickersEnabled": true, "statusLine": {"text": "Icons orvoed away"}})json"},
    {"", "delay1", R"json({"rehideOption": -1, "rehideText": "After 1 second"})json"},
    {"", "delay-5", R"json({"rehideOption": -1, "rehideText": "Never"})json"}};

TEST(OrvoViewTest, EverySituationIsToldAsItIs) {
  for (const auto& [missing, steps, told] : situations) {
    World world(missing);
    const OrvoView view(world.model->shared_from_this(), world.memory.platform);
    world.play(steps);
    const Value said = view.values();
    Value expected = said;
    expected.merge_patch(Value::parse(told));
    EXPECT_EQ(Value::diff(said, expected), Value::array()) << told;
  }
}

TEST(OrvoViewTest, WhatNothingOpenedIsToldOnItsPageUntilThatIsLeft) {
  for (const char* const word : {linuxWords.couldNotOpen, macWords.couldNotOpen}) {
    World world("/Downloads/O");
    OrvoView view(world.model->shared_from_this(), world.memory.platform);
    world.memory.words.couldNotOpen = word;
    const auto message = [&] { return view.values()["message"]; };
    const Value before = message();
    world.memory.workspace.opensNothing = true;
    view.perform("setup", nullptr);
    EXPECT_THAT(world.memory.workspace.openedURLs,
                ElementsAre("file:///Applications/", "file:///home/user/Applications/"));
    view.perform("page", 0);  // which shows already
    EXPECT_EQ(message() == before, word == nullptr);
    world.play("otherhides settle press settle");
    EXPECT_EQ(message(), before) << "what something newer was told over comes back";
    view.perform("setup", nullptr);
    view.perform("page", 2);
    view.perform("page", 0);
    EXPECT_EQ(message(), before);
    view.perform("page", 2);
    view.perform("openLink", 1);
    world.play("login");  // which this page does not tell
    EXPECT_EQ(message() == Value(""), word == nullptr);
    world.memory.workspace.opensNothing = false;
    view.perform("openLink", 1);
    EXPECT_EQ(message(), "");
  }
}

TEST(OrvoViewTest, TheSevenCopiedLinesAreConfirmedForTwoSecondsAfterTheFirstPress) {
  World world("/Downloads/O noframework untrusted taken");
  ManualMainQueue& queue = world.memory.mainQueue;
  auto view = std::make_unique<OrvoView>(world.model->shared_from_this(), world.memory.platform);
  const auto button = [&] { return view->values()["copyButton"]["text"]; };
  view->perform("copyDiagnostics", nullptr);
  EXPECT_EQ(world.memory.pasteboard.text,
            "Orvo 0.2.0\nmacOS: Version 27.0 (Build 26A100)\nInstalled application: not ready\n"
            "Menu bar compatibility: unavailable\nAccessibility: not enabled\nSystem controls: not ready\n"
            "Keyboard shortcut: unavailable");
  queue.advance(OrvoView::copiedDuration / 2);
  view->perform("copyDiagnostics", nullptr);
  EXPECT_EQ(button(), "Copied");
  queue.advance(OrvoView::copiedDuration / 2);
  EXPECT_EQ(button(), "Copy system details");
  view.reset();
  queue.advance(OrvoView::copiedDuration);
  world.model->searchText = "nobody listens";
}

}  // namespace orvo
