// Everything that the settings window says and offers: the selected page, every text, label, symbol
// name, enabling and action, without a pixel. Owned by AppDelegate beside the window that shows it,
// which it outlives; main thread only. Nothing of the model is kept here: every answer is read afresh.
#pragma once

#include "core/IconRule.h"
#include "model/Published.h"
#include "platform/ApplicationIcons.h"
#include "platform/Platform.h"
#include "platform/Window.h"

#include <nlohmann/json_fwd.hpp>

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

  struct AppRow {
    std::string bundleID;
    std::string name;
    std::int32_t pid;
    IconRule rule;
    std::string detail;
    std::string pickerLabel;

    bool operator==(const AppRow&) const = default;
  };

  // Texts in UTF-8, flags, whole numbers, and records and lists of them.
  using Value = nlohmann::json;

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

  std::string version() const;
  std::string diagnosticsText() const;

  // The window comes from a library of its own that is loaded late: what it calls is virtual, so that it
  // runs the program's code and no copy of it.

  // A record of all that the window shows beside the rows, by the names that the layout has for it.
  virtual Value values() const;
  virtual std::vector<AppRow> rows() const;
  // What the person does. The argument is a flag, a number or a text, by the action; null for none. An action that it
  // does not know, or an argument of the wrong kind, is a fault of the layout's, and thrown.
  virtual void perform(const std::string& action, const Value& argument);
  // Answers exactly once, never inside the call.
  virtual void applicationIcon(std::int32_t pid, int pixels, ApplicationIcons::Answer answer) const;

 private:
  struct Notice {
    Page page;
    std::string text;
    // What was told without it, and whether icons could be hidden at all; what differs later makes it old.
    std::pair<std::string, bool> over;
  };
  struct Link {
    std::string label;
    std::string address;
  };

  void addShared(Value& all) const;
  void addIconsPage(Value& all) const;
  void addBehaviorPage(Value& all) const;
  void addAboutPage(Value& all) const;

  Value texts() const;
  Value statusLine() const;
  Value stateBadge() const;
  // What a page has to tell: what it could not open, else the model's message and who else hides icons.
  std::string message() const;
  std::string messageOf(Page one) const;
  std::string guidance() const;
  Value setupAdvice() const;
  Value emptyState() const;
  std::string emptyTitle() const;
  std::string emptyDetail() const;
  std::string actionTitle() const;
  std::string actionHint() const;
  Value primaryButton() const;
  std::string rehideText() const;
  Value diagnostics() const;
  std::array<Link, 2> links() const;

  std::pair<std::string, bool> situation(Page one) const;
  bool isNoticeOld() const;

  void select(Page newPage);
  void performSetupAction();
  void chooseRehideOption(std::size_t option);
  bool isListPending() const;
  void takeOver();
  void copyDiagnostics();
  void openLink(std::size_t link);

  // Of the bundle's information, where it is a text.
  std::string infoText(const char* key, const char* fallback) const;
  // A whole address, or a path inside the bundle.
  std::string linkAddress(const char* key) const;
  // Opens the first of the places that anything opens; what fails is told on the page of the press.
  void open(Page from, const std::string& name, std::vector<std::string> places);
  void sayUnopened(Page from, const std::string& name);

  Published<bool> takesOver_{willChange, false};
  Published<std::optional<Notice>> notice_{willChange, std::nullopt};
  std::shared_ptr<OrvoModel> model_;
  const Platform platform_;
  ObjectWillChange::Token modelToken_ = ObjectWillChange::Token::none;
  // Dies with the view: what a delayed task must find alive.
  std::shared_ptr<OrvoView*> self_;
};

}  // namespace orvo
