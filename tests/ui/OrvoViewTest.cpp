#include "ui/OrvoView.h"

#include "model/OrvoModel.h"
#include "platform/linux/LinuxWords.h"
#include "support/MemoryPlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>

namespace orvo {

namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using ::testing::Not;

struct Desk {
  explicit Desk(const std::function<void(MemoryPlatform&)>& prepare = [](MemoryPlatform&) {}) {
    prepare(memory);
    model = OrvoModel::make(memory.platform);
    model->start();
    memory.settle();
    view = std::make_unique<OrvoView>(model, memory.platform);
  }
  ~Desk() { model->stop(); }

  MemoryPlatform memory;
  std::shared_ptr<OrvoModel> model;
  std::unique_ptr<OrvoView> view;
};

using Prepare = void (*)(MemoryPlatform&);
using Act = void (*)(OrvoModel&);

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
void withoutTap(MemoryPlatform& memory) {
  everythingRight(memory);
  memory.eventTaps.creationFails = true;
}

void nothing(OrvoModel&) {}
void choose(OrvoModel& model) { model.setRule(IconRule::hidden, "org.example.one"); }
void hide(OrvoModel& model) {
  choose(model);
  model.hideSelected();
}

TEST(OrvoViewTest, TheFirstMissingConditionWordsTheHintAndTheGuidance) {
  using enum OrvoView::Guidance;
  struct Situation {
    Prepare prepare;
    Act act;
    const char* hint;
    const char* title;
    OrvoView::Guidance guidance;
  };
  const Situation situations[] = {
      {nothingRight, nothing, "Your icons remain visible on this macOS version.", "0 apps selected to hide",
       unsupported},
      {outsideApplications, nothing, "Open the Applications copy to enable hiding.", "0 apps selected to hide", setup},
      {untrusted, nothing, "Allow Accessibility to get started.", "0 apps selected to hide", setup},
      {everythingRight, nothing, "Choose Hide next to an app to get started.", "0 apps selected to hide", revealGuide},
      {everythingRight, choose, "Hiding an icon keeps its app running.", "1 app selected to hide", revealGuide},
      {withoutTap, choose, "System controls are not ready. Refresh the icon list.", "1 app selected to hide",
       revealGuide},
      {everythingRight, hide, "Click the left arrow to bring your icons back.", "Updating your menu bar…", revealGuide},
  };
  for (const Situation& situation : situations) {
    const Desk desk(situation.prepare);
    situation.act(*desk.model);
    EXPECT_EQ(desk.view->actionHint(), situation.hint);
    EXPECT_EQ(desk.view->actionTitle(), situation.title) << situation.hint;
    EXPECT_EQ(desk.view->guidance(), situation.guidance) << situation.hint;
  }
}

TEST(OrvoViewTest, TheEmptyListTellsTheFirstReasonThatHolds) {
  struct Case {
    bool trusted, scanning;
    const char* search;
    const char* title;
    const char* symbol;
    bool clears;
  };
  for (const Case& one : {Case{false, true, "x", "Your apps will appear here", "hand.raised", false},
                          Case{true, true, "x", "Finding menu bar icons…", "magnifyingglass", true},
                          Case{true, false, " ", "No matching apps", "magnifyingglass", true},
                          Case{true, false, "", "No app icons found", "magnifyingglass", false}}) {
    Desk desk;
    desk.memory.scanExecutor.holds = true;
    if (one.scanning) desk.model->refresh();
    desk.memory.accessibility.trusted = one.trusted;
    desk.model->requestAccessibility();
    desk.model->searchText = std::string(one.search);
    EXPECT_EQ(desk.view->emptyTitle(), one.title);
    EXPECT_EQ(desk.view->emptyState().symbol, one.symbol);
    EXPECT_EQ(desk.view->emptyState().offersClearSearch, one.clears) << one.title;
    EXPECT_FALSE(desk.view->showsListFooter());
  }
}

TEST(OrvoViewTest, TheSetupButtonOpensWhatItsTextSpeaksOf) {
  Desk outside(outsideApplications);
  EXPECT_EQ(outside.view->setupAdvice().button, "Open Applications");
  outside.view->performSetupAction();
  EXPECT_THAT(outside.memory.workspace.openedURLs, ElementsAre("file:///Applications/"));
  EXPECT_EQ(outside.memory.accessibility.prompts, 0);

  Desk inside(untrusted);
  EXPECT_EQ(inside.view->setupAdvice().button, "Open Settings…");
  inside.view->performSetupAction();
  EXPECT_EQ(inside.memory.accessibility.prompts, 1);
  EXPECT_THAT(inside.memory.workspace.openedURLs, ElementsAre(HasSubstr("Privacy_Accessibility")));
}

TEST(OrvoViewTest, WhatNothingOpenedIsToldOnItsPageWhereTheSystemHasAWordForIt) {
  for (const char* const word : {linuxWords.couldNotOpen, macWords.couldNotOpen}) {
    Desk desk(outsideApplications);
    desk.memory.words.couldNotOpen = word;
    desk.memory.workspace.opensNothing = true;
    const auto before = desk.view->message();
    desk.view->performSetupAction();
    EXPECT_EQ(desk.memory.workspace.openedURLs.back(), "file:///home/user/Applications/");
    EXPECT_EQ(desk.view->message() == before, word == nullptr);
    desk.view->page = OrvoView::Page::about;
    for (const bool opens : {true, false}) {
      desk.memory.workspace.opensNothing = !opens;
      desk.view->openLink(1);
      EXPECT_EQ(desk.view->message().has_value(), !opens && word != nullptr);
    }
  }
}

TEST(OrvoViewTest, ALinkLeadsIntoTheBundleUntilItHasAnAddress) {
  Desk desk;
  desk.memory.bundle.info["OrvoProjectAddress"] = std::string("share/doc/a b.md");
  desk.memory.bundle.info["OrvoResearchAddress"] = std::string("https://example.org/research");
  EXPECT_EQ(desk.view->links()[0].address, "file:///Applications/Orvo.app/share/doc/a%20b.md");
  EXPECT_EQ(desk.view->links()[1].address, "https://example.org/research");
}

// What the view says of its own accord in a situation.
std::vector<std::string> said(const OrvoView& view) {
  std::vector<std::string> all{view.unsupportedCard().title,
                               view.unsupportedCard().detail,
                               view.setupAdvice().detail,
                               view.emptyDetail(),
                               view.actionHint(),
                               view.primaryButton().toolTip,
                               view.privacyCard().title,
                               view.links()[1].label,
                               view.diagnosticsText(),
                               view.diagnostics()[0].title};
  for (const auto& [name, text] : view.texts()) all.push_back(text);
  return all;
}

TEST(OrvoViewTest, EverySystemHasItsOwnWords) {
  const Desk mac;
  EXPECT_THAT(
      said(*mac.view),
      IsSupersetOf(
          {"This macOS build is not supported",
           "Orvo cannot manage icons on this macOS version. All icons remain visible.",
           "Turn on Orvo in Privacy & Security → Accessibility to find icons and keep system controls usable.",
           "Open an app with a menu bar icon, then use Refresh. macOS system controls are kept visible.",
           "Your choices stay on this Mac", "macOS compatibility research", "macOS", "ON THIS MAC",
           "Built for macOS 27", "⌃ ⌥ ⌘ B", "Control Option Command B",
           ("Orvo uses a private macOS menu bar API that may change with system updates. Each choice applies to all "
            "icons from one app. Some system extras may be unavailable while icons are hidden; quitting Orvo restores "
            "the bar.")}));
  for (const Prepare prepare : {nothingRight, outsideApplications, untrusted, everythingRight}) {
    Desk linux([&](MemoryPlatform& memory) {
      prepare(memory);
      memory.words = linuxWords;
    });
    hide(*linux.model);
    for (const char* foreign : {"Mac", "mac", "MAC", "⌘", "Command", "System Settings", "Privacy &"})
      EXPECT_THAT(said(*linux.view), Each(Not(HasSubstr(foreign))));
  }
}

TEST(OrvoViewTest, AVersionThatIsMissingOrNoTextIsReplaced) {
  Desk desk;
  auto& info = desk.memory.bundle.info;
  info["CFBundleShortVersionString"] = std::string("1.4");
  EXPECT_EQ(desk.view->texts().at("versionLine"), "Orvo 1.4");
  info["CFBundleShortVersionString"] = 1.5;
  EXPECT_EQ(desk.view->version(), "0.2.0");
  info.clear();
  EXPECT_EQ(desk.view->version(), "0.2.0");
}

TEST(OrvoViewTest, TheCopiedDetailsAreSevenLines) {
  Desk desk(nothingRight);
  desk.view->copyDiagnostics();
  EXPECT_EQ(desk.memory.pasteboard.text,
            "Orvo 0.2.0\nmacOS: Version 27.0 (Build 26A100)\nInstalled application: not ready\n"
            "Menu bar compatibility: unavailable\nAccessibility: not enabled\nSystem controls: not ready\n"
            "Keyboard shortcut: unavailable");
  EXPECT_EQ(desk.view->diagnostics().front().ready, std::nullopt);
  EXPECT_EQ(desk.view->diagnostics().back().value, "In use by another app");
}

TEST(OrvoViewTest, TheCopyButtonConfirmsForTwoSecondsAfterTheFirstPress) {
  Desk desk;
  desk.view->copyDiagnostics();
  desk.memory.mainQueue.advance(OrvoView::copiedDuration / 2);
  desk.view->copyDiagnostics();
  EXPECT_EQ(desk.view->copyButton().text, "Copied");
  desk.memory.mainQueue.advance(OrvoView::copiedDuration / 2);
  EXPECT_EQ(desk.view->copyButton().text, "Copy system details");
  desk.view.reset();
  desk.memory.mainQueue.advance(OrvoView::copiedDuration);
}

TEST(OrvoViewTest, AStoredDelayThatIsNotOfferedIsToldInItsOwnWords) {
  Desk desk;
  using Case = std::tuple<std::int64_t, std::optional<std::size_t>, const char*>;
  for (const auto& [seconds, option, text] :
       {Case{0, 0, "Never"}, Case{30, 3, "After 30 seconds"}, Case{1, {}, "After 1 second"}, Case{-5, {}, "Never"}}) {
    desk.model->setPreferences({.rules = {{"kept", IconRule::hidden}}, .autoRehideSeconds = seconds});
    EXPECT_EQ(desk.view->rehideOption(), option);
    EXPECT_EQ(desk.view->rehideText(), text);
  }
  desk.view->chooseRehideOption(0);
  EXPECT_EQ(desk.model->preferences(),
            (OrvoPreferences{.rules = {{"kept", IconRule::hidden}}, .autoRehideSeconds = 0}));
}

TEST(OrvoViewTest, EveryChangeIsAnnouncedUntilTheObserverIsGone) {
  Desk desk;
  int announced = 0;
  const auto token = desk.view->willChange.observe([&] { ++announced; });
  desk.view->page = OrvoView::Page::about;
  desk.model->searchText = "news";
  desk.view->copyDiagnostics();
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
