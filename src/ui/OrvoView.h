// Everything that the settings window says and offers: the selected page, every text, label, symbol
// name, enabling and action, without a pixel. Owned by AppDelegate beside the window that shows it,
// which it outlives; main thread only. Nothing of the model is kept here: every answer is read afresh.
#pragma once

#include "core/IconRule.h"
#include "model/BarState.h"
#include "model/Published.h"
#include "platform/ApplicationIcons.h"
#include "platform/Platform.h"
#include "platform/Window.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo {

class OrvoModel;

class OrvoView : public WindowContent {
 public:
  // In the order of the navigation column.
  enum class Page { icons, behavior, about };
  static constexpr std::array<Page, 3> allPages{Page::icons, Page::behavior, Page::about};
  // The raw value is also the page's label; any other text yields no page.
  static std::string_view rawValue(Page page);
  static std::optional<Page> pageFromRawValue(std::string_view rawValue);
  static std::string_view symbol(Page page);

  struct StateBadge {
    enum class Indicator { progress, accentDot, quietDot };
    Indicator indicator;
    std::string text;
  };
  struct Label {
    std::string symbol;
    std::string text;
  };
  struct SetupStep {
    std::string title;
    std::string number;
    bool complete;
    std::string accessibilityLabel;
  };
  struct SetupAdvice {
    std::string title;
    std::string detail;
    std::string button;
  };
  struct InformationCard {
    std::string title;
    std::string detail;
    std::string symbol;
    bool attention;
  };
  // What stands above the icon list, exactly one of these.
  enum class Guidance { unsupported, revealGuide, setup };
  struct AppRow {
    std::string bundleID;
    std::string name;
    std::int32_t pid;
    IconRule rule;
    std::string detail;
    std::string pickerLabel;

    bool operator==(const AppRow&) const = default;
  };
  struct EmptyState {
    std::string symbol;
    bool offersClearSearch;
  };
  struct PrimaryButton {
    std::string label;  // empty: the symbol stands alone
    std::string symbol;
    std::string accessibilityLabel;
    std::string toolTip;
    bool enabled;
  };
  struct RehideOption {
    std::string text;
    std::int64_t seconds;
  };
  struct DiagnosticRow {
    std::string title;
    std::string value;
    std::optional<bool> ready;
  };
  struct Link {
    std::string label;
    std::string address;
  };

  // How long the copy button confirms a press, on the clock that goes on while the machine sleeps.
  static constexpr std::chrono::milliseconds copiedDuration{2000};

  OrvoView(std::shared_ptr<OrvoModel> model, const Platform& platform);
  ~OrvoView() override;
  OrvoView(const OrvoView&) = delete;
  OrvoView& operator=(const OrvoView&) = delete;

  // Announced before every assignment of `page`, `copiedDiagnostics` or a property of the model.
  ObjectWillChange willChange;

  Published<Page> page{willChange, Page::icons};
  Published<bool> copiedDiagnostics{willChange, false};

  // Column and shared pieces.
  std::string version() const;
  std::string versionLine() const;
  Label statusLine() const;
  StateBadge stateBadge() const;
  std::optional<std::string> message() const;

  // Menu bar page.
  Guidance guidance() const;
  InformationCard unsupportedCard() const;
  std::array<SetupStep, 2> setupSteps() const;
  SetupAdvice setupAdvice() const;
  void performSetupAction();
  bool shortcutAvailable() const;
  std::string searchText() const;
  void setSearchText(const std::string& text);
  void clearSearch();
  bool searchEnabled() const;
  bool offersClearSearch() const;
  bool isScanning() const;
  bool refreshEnabled() const;
  void refresh();
  std::vector<AppRow> rows() const;
  bool pickersEnabled() const;
  void choose(IconRule rule, const std::string& bundleID);
  EmptyState emptyState() const;
  std::string emptyTitle() const;
  std::string emptyDetail() const;
  bool showsListFooter() const;
  std::string listCount() const;
  std::string actionTitle() const;
  std::string actionHint() const;
  PrimaryButton primaryButton() const;
  void performPrimaryAction();
  // Answers exactly once, never inside the call.
  void applicationIcon(std::int32_t pid, int pixels, ApplicationIcons::Answer answer) const;

  // Behavior page.
  bool launchAtLogin() const;
  void setLaunchAtLogin(bool enabled);
  std::string shortcutDetail() const;
  static const std::array<RehideOption, 4>& rehideOptions();
  // Absent when the stored delay is none of the options.
  std::optional<std::size_t> rehideOption() const;
  // What the closed picker shows; a stored delay without an option is told in its own words.
  std::string rehideText() const;
  void chooseRehideOption(std::size_t option);
  InformationCard systemControlsCard() const;

  // About page.
  std::vector<DiagnosticRow> diagnostics() const;
  std::string diagnosticsText() const;
  Label copyButton() const;
  void copyDiagnostics();
  InformationCard privacyCard() const;
  static const std::array<Link, 2>& links();
  void openLink(std::size_t link);

 private:
  std::shared_ptr<OrvoModel> model_;
  const Platform platform_;
  ObjectWillChange::Token modelToken_ = ObjectWillChange::Token::none;
  // Dies with the view: what a delayed task must find alive.
  std::shared_ptr<OrvoView*> self_;
};

}  // namespace orvo
