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
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo {

class OrvoModel;

// Visible beyond the program, since the settings' module may be built to check what kind of object it is handed.
class __attribute__((visibility("default"))) OrvoView : public WindowContent {
 public:
  // In the order of the navigation column.
  enum class Page { icons, behavior, about };
  static constexpr std::array<Page, 3> allPages{Page::icons, Page::behavior, Page::about};
  // The raw value is also the page's label; any other text yields no page.
  static std::string_view rawValue(Page page);
  static std::optional<Page> pageFromRawValue(std::string_view rawValue);
  static std::string_view symbol(Page page);

  // An indicator that turns, or a dot, before a text.
  struct StateBadge {
    bool inProgress;
    bool accentDot;
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

  // The window comes from a library of its own that is loaded late: what it calls is virtual, so that it
  // runs the program's code and no copy of it.

  // Announced before every assignment of `page`, `copiedDiagnostics` or a property of the model.
  ObjectWillChange willChange;

  Published<Page> page{willChange, Page::icons};
  Published<bool> copiedDiagnostics{willChange, false};

  // Column and shared pieces.
  // By page, in the order of the column.
  virtual std::array<Label, 3> pages() const;
  std::string version() const;
  // What never changes while the program runs, by the name that the layout has for it.
  virtual std::map<std::string, std::string> texts() const;
  virtual Label statusLine() const;
  virtual StateBadge stateBadge() const;
  // What the selected page has to tell: what it could not open, else the model's message.
  virtual std::optional<std::string> message() const;

  // Menu bar page.
  virtual Guidance guidance() const;
  virtual InformationCard unsupportedCard() const;
  virtual std::array<SetupStep, 2> setupSteps() const;
  virtual SetupAdvice setupAdvice() const;
  virtual void performSetupAction();
  virtual bool shortcutAvailable() const;
  virtual std::string searchText() const;
  virtual void setSearchText(const std::string& text);
  virtual void clearSearch();
  virtual bool searchEnabled() const;
  virtual bool offersClearSearch() const;
  virtual bool isScanning() const;
  virtual bool refreshEnabled() const;
  virtual void refresh();
  virtual std::vector<AppRow> rows() const;
  virtual bool pickersEnabled() const;
  virtual void choose(IconRule rule, const std::string& bundleID);
  virtual EmptyState emptyState() const;
  virtual std::string emptyTitle() const;
  virtual std::string emptyDetail() const;
  virtual bool showsListFooter() const;
  virtual std::string listCount() const;
  virtual std::string actionTitle() const;
  virtual std::string actionHint() const;
  virtual PrimaryButton primaryButton() const;
  virtual void performPrimaryAction();
  // Answers exactly once, never inside the call.
  virtual void applicationIcon(std::int32_t pid, int pixels, ApplicationIcons::Answer answer) const;

  // Behavior page.
  virtual bool launchAtLogin() const;
  virtual void setLaunchAtLogin(bool enabled);
  virtual std::string shortcutDetail() const;
  virtual const std::array<RehideOption, 4>& rehideOptions() const;
  // Absent when the stored delay is none of the options.
  virtual std::optional<std::size_t> rehideOption() const;
  // What the closed picker shows; a stored delay without an option is told in its own words.
  virtual std::string rehideText() const;
  virtual void chooseRehideOption(std::size_t option);
  virtual InformationCard systemControlsCard() const;

  // About page.
  virtual std::vector<DiagnosticRow> diagnostics() const;
  virtual std::string diagnosticsText() const;
  virtual Label copyButton() const;
  virtual void copyDiagnostics();
  virtual InformationCard privacyCard() const;
  virtual std::array<Link, 2> links() const;
  virtual void openLink(std::size_t link);

 private:
  struct Notice {
    Page page;
    std::string text;
    std::optional<std::string> over;  // the model's message at that time, which a newer one replaces
  };

  // Of the bundle's information, where it is a text.
  std::string infoText(const char* key, const char* fallback) const;
  // A whole address, or a path inside the bundle.
  std::string linkAddress(const char* key) const;
  // Opens the first of the places that anything opens.
  void open(const std::string& name, std::vector<std::string> places);
  void sayUnopened(const std::string& name);

  Published<std::optional<Notice>> notice_{willChange, std::nullopt};
  std::shared_ptr<OrvoModel> model_;
  const Platform platform_;
  ObjectWillChange::Token modelToken_ = ObjectWillChange::Token::none;
  // Dies with the view: what a delayed task must find alive.
  std::shared_ptr<OrvoView*> self_;
};

}  // namespace orvo
