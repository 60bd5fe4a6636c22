#include "ui/OrvoView.h"

#include "model/OrvoModel.h"
#include "support/MemoryPlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvo {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

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

void showOne(MemoryPlatform& memory) { memory.showItems({"org.example.one"}); }

struct Situation {
  const char* name;
  std::function<void(MemoryPlatform&)> prepare;
  std::function<void(OrvoModel&)> act;
  const char* hint;
  const char* title;
  OrvoView::Guidance guidance;
};

void hideOne(OrvoModel& model) {
  model.setRule(IconRule::hidden, "org.example.one");
  model.hideSelected();
}

TEST(OrvoViewTest, TheFirstMissingConditionWordsTheHintAndTheGuidance) {
  const auto nothing = [](OrvoModel&) {};
  const auto withoutTrust = [](MemoryPlatform& memory) { memory.accessibility.trusted = false; };
  const Situation situations[] = {
      {"nothing is right",
       [](MemoryPlatform& memory) {
         memory.framework.loads = false;
         memory.bundle.bundlePath = "/tmp/Orvo.app";
         memory.accessibility.trusted = false;
       },
       nothing, "Your icons remain visible on this macOS version.", "0 apps selected to hide",
       OrvoView::Guidance::unsupported},
      {"not installed, not trusted",
       [](MemoryPlatform& memory) {
         memory.bundle.bundlePath = "/tmp/Orvo.app";
         memory.accessibility.trusted = false;
       },
       nothing, "Open the Applications copy to enable hiding.", "0 apps selected to hide", OrvoView::Guidance::setup},
      {"not trusted", withoutTrust, nothing, "Allow Accessibility to get started.", "0 apps selected to hide",
       OrvoView::Guidance::setup},
      {"nothing chosen", showOne, nothing, "Choose Hide next to an app to get started.", "0 apps selected to hide",
       OrvoView::Guidance::revealGuide},
      {"one chosen", showOne, [](OrvoModel& model) { model.setRule(IconRule::hidden, "org.example.one"); },
       "Hiding an icon keeps its app running.", "1 app selected to hide", OrvoView::Guidance::revealGuide},
      {"system controls unknown",
       [](MemoryPlatform& memory) {
         showOne(memory);
         memory.eventTaps.creationFails = true;
       },
       [](OrvoModel& model) { model.setRule(IconRule::hidden, "org.example.one"); },
       "System controls are not ready. Refresh the icon list.", "1 app selected to hide",
       OrvoView::Guidance::revealGuide},
      {"applying", showOne, hideOne, "Click the left arrow to bring your icons back.", "Updating your menu bar…",
       OrvoView::Guidance::revealGuide},
  };
  for (const Situation& situation : situations) {
    SCOPED_TRACE(situation.name);
    Desk desk(situation.prepare);
    situation.act(*desk.model);
    EXPECT_EQ(desk.view->actionTitle(), situation.title);
    EXPECT_EQ(desk.view->guidance(), situation.guidance);
    EXPECT_EQ(desk.view->actionHint(), situation.hint);
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
    Desk desk([&](MemoryPlatform& memory) { memory.accessibility.trusted = one.trusted; });
    desk.model->isScanning = one.scanning;
    desk.model->searchText = std::string(one.search);
    EXPECT_EQ(desk.view->emptyTitle(), one.title);
    EXPECT_EQ(desk.view->emptyState().symbol, one.symbol);
    EXPECT_EQ(desk.view->emptyState().offersClearSearch, one.clears) << one.title;
    EXPECT_FALSE(desk.view->showsListFooter());
  }
}

TEST(OrvoViewTest, WhileApplyingTheButtonRevealsAndThePickersRest) {
  Desk desk(showOne);
  hideOne(*desk.model);
  EXPECT_EQ(desk.view->stateBadge().text, "Updating");
  EXPECT_EQ(desk.view->statusLine().text, "Apps keep running");
  EXPECT_FALSE(desk.view->pickersEnabled());
  EXPECT_TRUE(desk.view->primaryButton().enabled);
  EXPECT_EQ(desk.view->primaryButton().accessibilityLabel, "Reveal hidden icons");

  desk.memory.framework.answer(0);
  desk.memory.settle();
  EXPECT_EQ(desk.view->stateBadge().text, "Orvoed away");
  EXPECT_EQ(desk.view->statusLine().text, "Icons orvoed away");
  EXPECT_TRUE(desk.view->pickersEnabled());

  desk.view->performPrimaryAction();
  EXPECT_EQ(desk.model->state(), BarState::visible);
  EXPECT_EQ(desk.view->primaryButton().label, "Hide selected");
}

TEST(OrvoViewTest, TheSetupButtonOpensWhatItsTextSpeaksOf) {
  Desk outside([](MemoryPlatform& memory) { memory.bundle.bundlePath = "/tmp/Orvo.app"; });
  EXPECT_EQ(outside.view->setupAdvice().button, "Open Applications");
  EXPECT_EQ(outside.view->setupSteps()[0].accessibilityLabel, "Install in Applications: required");
  outside.view->performSetupAction();
  EXPECT_THAT(outside.memory.workspace.openedURLs, ElementsAre("file:///Applications/"));
  EXPECT_EQ(outside.memory.accessibility.prompts, 0);

  Desk untrusted([](MemoryPlatform& memory) { memory.accessibility.trusted = false; });
  EXPECT_EQ(untrusted.view->setupAdvice().button, "Open Settings…");
  EXPECT_EQ(untrusted.view->setupSteps()[0].accessibilityLabel, "Install in Applications: complete");
  untrusted.view->performSetupAction();
  EXPECT_EQ(untrusted.memory.accessibility.prompts, 1);
  EXPECT_THAT(untrusted.memory.workspace.openedURLs, ElementsAre(HasSubstr("Privacy_Accessibility")));
}

TEST(OrvoViewTest, AVersionThatIsMissingOrNoTextIsReplaced) {
  Desk desk;
  EXPECT_EQ(desk.view->versionLine(), "Orvo 0.2.0");
  desk.memory.bundle.info["CFBundleShortVersionString"] = std::string("1.4");
  EXPECT_EQ(desk.view->version(), "1.4");
  desk.memory.bundle.info["CFBundleShortVersionString"] = 1.5;
  EXPECT_EQ(desk.view->version(), "0.2.0");
  desk.memory.bundle.info.clear();
  EXPECT_EQ(desk.view->version(), "0.2.0");
}

TEST(OrvoViewTest, TheCopiedDetailsAreSevenLines) {
  Desk desk([](MemoryPlatform& memory) {
    memory.framework.loads = false;
    memory.bundle.bundlePath = "/tmp/Orvo.app";
    memory.accessibility.trusted = false;
    memory.hotKeys.registerStatus = -9878;
  });
  desk.view->copyDiagnostics();
  EXPECT_EQ(desk.memory.pasteboard.text,
            "Orvo 0.2.0\nmacOS: Version 27.0 (Build 26A100)\nInstalled application: not ready\n"
            "Menu bar compatibility: unavailable\nAccessibility: not enabled\nSystem controls: not ready\n"
            "Keyboard shortcut: unavailable");
  EXPECT_EQ(desk.view->diagnostics().front().ready, std::nullopt);
  EXPECT_EQ(desk.view->diagnostics().back().value, "In use by another app");
}

TEST(OrvoViewTest, ASecondPressDoesNotProlongTheFirstConfirmation) {
  using std::chrono::milliseconds;
  Desk desk;
  desk.view->copyDiagnostics();
  desk.memory.mainQueue.advance(milliseconds(1500));
  desk.view->copyDiagnostics();
  desk.memory.mainQueue.advance(milliseconds(499));
  EXPECT_EQ(desk.view->copyButton().text, "Copied");
  desk.memory.mainQueue.advance(milliseconds(1));
  EXPECT_EQ(desk.view->copyButton().text, "Copy system details");
  // The rest of the second press finds nothing to do, also when the view has gone.
  desk.view->copyDiagnostics();
  desk.view.reset();
  desk.memory.mainQueue.advance(milliseconds(5000));
}

TEST(OrvoViewTest, AStoredDelayThatIsNotOfferedIsToldInItsOwnWords) {
  Desk desk;
  struct Case {
    std::int64_t seconds;
    std::optional<std::size_t> option;
    const char* text;
  };
  for (const Case& one : {Case{0, 0, "Never"}, Case{30, 3, "After 30 seconds"}, Case{45, {}, "After 45 seconds"},
                          Case{1, {}, "After 1 second"}, Case{-5, {}, "Never"}}) {
    desk.model->setPreferences({.rules = {}, .autoRehideSeconds = one.seconds});
    EXPECT_EQ(desk.view->rehideOption(), one.option);
    EXPECT_EQ(desk.view->rehideText(), one.text);
  }
  desk.model->setRule(IconRule::hidden, "kept");
  desk.view->chooseRehideOption(0);
  EXPECT_EQ(desk.model->preferences().autoRehideSeconds, 0);
  EXPECT_EQ(desk.model->preferences().rules.size(), 1U);
}

TEST(OrvoViewTest, EveryChangeIsAnnouncedUntilTheObserverIsGone) {
  Desk desk;
  int announced = 0;
  const auto token = desk.view->willChange.observe([&] { ++announced; });
  desk.view->page = OrvoView::Page::about;
  desk.model->message = "news";
  desk.view->copyDiagnostics();
  EXPECT_EQ(announced, 3);
  desk.view->willChange.remove(token);
  desk.model->message = "more";
  EXPECT_EQ(announced, 3);
  desk.view.reset();
  desk.model->message = "nobody listens";
}

TEST(OrvoViewTest, PagesAreNamedByExactlyTheirLabels) {
  for (const OrvoView::Page page : OrvoView::allPages) {
    EXPECT_EQ(OrvoView::pageFromRawValue(OrvoView::rawValue(page)), page);
  }
  for (const char* other : {"", "menu bar", "Menu bar ", "icons"})
    EXPECT_EQ(OrvoView::pageFromRawValue(other), std::nullopt);
}

TEST(OrvoViewTest, LinksOpenInTheBrowser) {
  Desk desk;
  for (std::size_t link = 0; link < desk.view->links().size(); ++link) desk.view->openLink(link);
  EXPECT_THAT(desk.memory.workspace.openedURLs,
              ElementsAre(desk.view->links()[0].address, desk.view->links()[1].address));
}

}  // namespace

}  // namespace orvo
