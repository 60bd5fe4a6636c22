#include "ui/OrvoView.h"

#include "model/OrvoModel.h"
#include "platform/Application.h"
#include "platform/Bundle.h"
#include "platform/FileSystem.h"
#include "platform/MainQueue.h"
#include "platform/Pasteboard.h"
#include "platform/ProcessInfo.h"
#include "platform/Words.h"
#include "platform/Workspace.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>
#include <utility>

namespace orvo {

namespace {

using Value = OrvoView::Value;

constexpr const char* applicationsFolder = "/Applications";

constexpr std::pair<const char*, const char*> fixedTexts[] = {
    {"name", "Orvo"},
    {"tagline", "A calmer menu bar"},
    {"iconsTitle", "Your menu bar"},
    {"iconsSubtitle", "Choose what stays. Orvo away the rest."},
    {"guideTitle", "Bring your icons back with the left arrow"},
    {"guideDetail", "Click Orvo in the menu bar. Right-click for settings."},
    {"find", "Find an app"},
    {"clearSearch", "Clear search"},
    {"refresh", "Refresh menu bar icons"},
    {"refreshing", "Refreshing menu bar icons"},
    {"apps", "Apps"},
    {"keep", "Keep"},
    {"hide", "Hide"},
    {"choicesNote", "Choices apply to all icons from each app."},
    {"behaviorTitle", "Behavior"},
    {"behaviorSubtitle", "Make Orvo fit into your day."},
    {"general", "GENERAL"},
    {"loginTitle", "Open Orvo at login"},
    {"loginDetail", "Keep your menu bar choices close at hand."},
    {"startsVisible", "Icons start visible whenever Orvo opens."},
    {"revealAndRehide", "REVEAL AND REHIDE"},
    {"shortcutTitle", "Toggle icons from any app"},
    {"rehideTitle", "Automatically hide again"},
    {"rehideDetail", "After revealing with Orvo or its shortcut."},
    {"aboutTagline", "A calmer menu bar."},
};

struct PageTraits {
  std::string_view rawValue;
  std::string_view symbol;
};

const PageTraits& traits(OrvoView::Page page) {
  static constexpr std::array<PageTraits, 3> all{
      {{"Menu bar", "menubar.rectangle"}, {"Behavior", "slider.horizontal.3"}, {"About Orvo", "info.circle"}}};
  return all.at(static_cast<std::size_t>(page));
}

// The delays that the picker offers, with their texts.
constexpr std::array<std::pair<const char*, std::int64_t>, 4> rehideOptions{
    {{"Never", 0}, {"After 5 seconds", 5}, {"After 10 seconds", 10}, {"After 30 seconds", 30}}};

// Absent when the delay is none of the options.
std::optional<std::size_t> rehideOption(std::int64_t seconds) {
  const auto* found = std::ranges::find(rehideOptions, seconds, &std::pair<const char*, std::int64_t>::second);
  if (found == rehideOptions.end()) return std::nullopt;
  return static_cast<std::size_t>(found - rehideOptions.begin());
}

Value label(std::string_view symbol, std::string_view text) { return {{"symbol", symbol}, {"text", text}}; }

Value setupStep(const std::string& title, const char* number, bool complete) {
  return {{"title", title},
          {"number", number},
          {"complete", complete},
          {"accessibilityLabel", title + ": " + (complete ? "complete" : "required")}};
}

Value informationCard(const char* title, const char* detail, const char* symbol, bool attention = false) {
  return {{"title", title}, {"detail", detail}, {"symbol", symbol}, {"attention", attention}};
}

// The mark of a row is there only where it can be ready or not.
Value diagnosticRow(const char* title, const std::string& value, std::optional<bool> ready) {
  return {{"title", title}, {"value", value}, {"marked", ready.has_value()}, {"ready", ready.value_or(false)}};
}

IconRule ruleFor(const OrvoPreferences& preferences, const std::string& bundleID) {
  const auto found = preferences.rules.find(bundleID);
  return found == preferences.rules.end() ? IconRule::visible : found->second;
}

std::string eitherText(bool condition, const char* whenTrue, const char* whenFalse) {
  return condition ? whenTrue : whenFalse;
}

}  // namespace

OrvoView::OrvoView(std::shared_ptr<OrvoModel> model, const Platform& platform)
    : model_(std::move(model)), platform_(platform), self_(std::make_shared<OrvoView*>(this)) {
  // Sees each value before the next: a notice that was over for a moment does not come back.
  modelToken_ = model_->willChange.observe([this] {
    if (isNoticeOld()) notice_ = std::nullopt;
    willChange.send();
  });
}

OrvoView::~OrvoView() { model_->willChange.remove(modelToken_); }

std::string_view OrvoView::rawValue(Page page) { return traits(page).rawValue; }

std::string_view OrvoView::symbol(Page page) { return traits(page).symbol; }

std::optional<OrvoView::Page> OrvoView::pageFromRawValue(std::string_view rawValue) {
  for (const Page page : allPages) {
    if (traits(page).rawValue == rawValue) return page;
  }
  return std::nullopt;
}

std::string OrvoView::version() const { return infoText("CFBundleShortVersionString", ORVO_VERSION); }

std::string OrvoView::infoText(const char* key, const char* fallback) const {
  return platform_.bundle.infoText(key).value_or(fallback);
}

OrvoView::Value OrvoView::values() const {
  Value all = Value::object();
  addShared(all);
  addIconsPage(all);
  addBehaviorPage(all);
  addAboutPage(all);
  return all;
}

void OrvoView::perform(const std::string& action, const Value& argument) {
  using Action = void (*)(OrvoView&, const Value&);
  static const std::map<std::string, Action> actions{
      {"page", [](OrvoView& view, const Value& index) { view.select(allPages.at(index.get<std::size_t>())); }},
      {"setup", [](OrvoView& view, const Value&) { view.performSetupAction(); }},
      {"search", [](OrvoView& view, const Value& text) { view.model_->searchText = text.get<std::string>(); }},
      {"takeOver", [](OrvoView& view, const Value&) { view.takeOver(); }},
      {"refresh", [](OrvoView& view, const Value&) { view.model_->refresh(); }},
      {"keep",
       [](OrvoView& view, const Value& bundle) { view.model_->setRule(IconRule::visible, bundle.get<std::string>()); }},
      {"hide",
       [](OrvoView& view, const Value& bundle) { view.model_->setRule(IconRule::hidden, bundle.get<std::string>()); }},
      {"primary", [](OrvoView& view, const Value&) { view.model_->toggle(); }},
      {"login", [](OrvoView& view, const Value& enabled) { view.model_->setLoginItem(enabled.get<bool>()); }},
      {"rehide", [](OrvoView& view, const Value& option) { view.chooseRehideOption(option.get<std::size_t>()); }},
      {"copyDiagnostics", [](OrvoView& view, const Value&) { view.copyDiagnostics(); }},
      {"openLink", [](OrvoView& view, const Value& link) { view.openLink(link.get<std::size_t>()); }},
  };
  actions.at(action)(*this, argument);
}

void OrvoView::select(Page newPage) {
  if (newPage == page()) return;
  if (notice_() && notice_()->page == page()) notice_ = std::nullopt;
  page = newPage;
}

void OrvoView::addShared(Value& all) const {
  Value& pages = all["pages"];
  for (const Page one : allPages) pages.push_back(label(symbol(one), rawValue(one)));
  all["page"] = static_cast<int>(page());
  all["texts"] = texts();
  all["statusLine"] = statusLine();
  all["stateBadge"] = stateBadge();
  all["message"] = message();
}

OrvoView::Value OrvoView::texts() const {
  const Words& words = platform_.words;
  Value texts{{"shortcut", words.spokenShortcut},       {"shortcutSigns", words.shortcutSigns},
              {"onThisComputer", words.onThisComputer}, {"builtForTitle", words.builtForTitle},
              {"builtForDetail", words.builtForDetail}, {"versionLine", "Orvo " + version()},
              {"aboutVersion", "Version " + version()}};
  for (const auto& [name, text] : fixedTexts) texts[name] = text;
  return texts;
}

OrvoView::Value OrvoView::statusLine() const {
  if (model_->state() == BarState::hidden) return label("chevron.left", "Icons orvoed away");
  return label("checkmark.circle", "Apps keep running");
}

// An indicator that turns, or a dot, before a text.
OrvoView::Value OrvoView::stateBadge() const {
  const auto badge = [](bool inProgress, bool accentDot, const char* text) -> Value {
    return {{"inProgress", inProgress}, {"accentDot", accentDot}, {"text", text}};
  };
  switch (model_->state()) {
    case BarState::applying:
      return badge(true, false, "Updating");
    case BarState::hidden:
      return badge(false, true, "Orvoed away");
    case BarState::visible:
      break;
  }
  return badge(false, model_->isConcealing(), model_->isConcealing() ? "Hidden" : "All visible");
}

std::string OrvoView::message() const {
  return notice_() && notice_()->page == page() && !isNoticeOld() ? notice_()->text : messageOf(page());
}

std::string OrvoView::messageOf(Page one) const {
  if (one == Page::about) return "";
  const std::vector<std::string>& concealers = model_->concealers();
  std::string own = model_->message().value_or("");
  if (concealers.empty()) return own;
  const std::string others = concealers.size() == 1 ? " hides" : " and other programs hide";
  return (own.empty() ? "" : own + ' ') + concealers.front() + others + " icons. Click the arrow to show them.";
}

std::pair<std::string, bool> OrvoView::situation(Page one) const {
  return {messageOf(one), one == Page::about || model_->canBeManaged()};
}

bool OrvoView::isNoticeOld() const { return notice_() && notice_()->over != situation(notice_()->page); }

void OrvoView::addIconsPage(Value& all) const {
  const bool granted = model_->accessibilityGranted();
  all["guidance"] = guidance();
  all["unsupportedCard"] = informationCard(platform_.words.unsupportedTitle, platform_.words.unsupportedDetail,
                                           "exclamationmark.triangle", true);
  const char* const takeOver = takesOver_() ? platform_.words.takesOver : platform_.words.takeOver;
  all["takeOver"] = {{"label", takeOver != nullptr ? takeOver : ""}, {"enabled", !takesOver_()}};
  all["setupSteps"] = {setupStep("Install in Applications", "1", model_->nativeMenuBarReady),
                       setupStep("Allow Accessibility", "2", granted)};
  all["setupAdvice"] = setupAdvice();
  all["shortcutAvailable"] = model_->shortcutAvailable();
  all["searchText"] = model_->searchText();
  all["searchEnabled"] = granted;
  all["isScanning"] = model_->isScanning();
  all["pickersEnabled"] = model_->state() != BarState::applying;
  all["emptyState"] = emptyState();
  all["showsListFooter"] = granted && !model_->apps().empty();
  all["listCount"] =
      std::to_string(model_->filteredApps().size()) + " of " + std::to_string(model_->apps().size()) + " apps";
  all["actionTitle"] = actionTitle();
  all["actionHint"] = actionHint();
  all["primaryButton"] = primaryButton();
}

// What stands above the icon list, exactly one of three.
std::string OrvoView::guidance() const {
  if (!model_->canBeManaged()) return "unsupported";
  return eitherText(model_->nativeMenuBarReady && model_->accessibilityGranted(), "revealGuide", "setup");
}

OrvoView::Value OrvoView::setupAdvice() const {
  if (!model_->nativeMenuBarReady) {
    return {{"title", "Give Orvo a permanent home"},
            {"detail", platform_.words.installAdvice},
            {"button", "Open Applications"}};
  }
  return {{"title", "One permission, then you’re ready"},
          {"detail", platform_.words.accessibilityAdvice},
          {"button", "Open Settings…"}};
}

void OrvoView::performSetupAction() {
  if (model_->nativeMenuBarReady) {
    model_->requestAccessibility();
  } else {
    const std::string own = platform_.fileSystem.homeDirectoryForCurrentUser() + applicationsFolder;
    open(page(), "/Applications or ~/Applications", {fileURL(applicationsFolder, true), fileURL(own, true)});
  }
}

// Only a new process asks anew whether icons can be hidden at all.
void OrvoView::takeOver() {
  notice_ = std::nullopt;
  takesOver_ = true;
  platform_.workspace.takeOverItems([weak = std::weak_ptr(self_)](const std::optional<std::string>& hindrance) {
    const auto self = weak.lock();
    if (!self) return;
    OrvoView& view = **self;
    view.takesOver_ = false;
    if (hindrance)
      view.notice_ = Notice{Page::icons, view.platform_.words.notTakenOver + *hindrance, view.situation(Page::icons)};
    else if (!view.model_->backendAvailable)
      view.platform_.application.relaunch();
  });
}

std::vector<OrvoView::AppRow> OrvoView::rows() const {
  std::vector<AppRow> rows;
  for (const DiscoveredApp& app : model_->filteredApps()) {
    const IconRule rule = ruleFor(model_->preferences(), app.bundleID);
    rows.push_back({app.bundleID, app.name, app.pid, rule,
                    eitherText(rule == IconRule::hidden, "Orvo away", "Keep in the menu bar"),
                    "Visibility for " + app.name});
  }
  return rows;
}

OrvoView::Value OrvoView::emptyState() const {
  const bool granted = model_->accessibilityGranted();
  return {{"symbol", granted || isListPending() ? "magnifyingglass" : "hand.raised"},
          {"title", emptyTitle()},
          {"detail", emptyDetail()},
          {"offersClearSearch", granted && !model_->searchText().empty()}};
}

// Who cannot manage items may not know of any.
bool OrvoView::isListPending() const {
  return platform_.words.nothingManaged != nullptr && !model_->canBeManaged() && model_->apps().empty();
}

std::string OrvoView::emptyTitle() const {
  if (!model_->accessibilityGranted() || isListPending()) return "Your apps will appear here";
  if (model_->isScanning()) return "Finding menu bar icons…";
  return eitherText(model_->searchText().empty(), "No app icons found", "No matching apps");
}

std::string OrvoView::emptyDetail() const {
  if (isListPending()) return platform_.words.nothingManaged;
  if (!model_->accessibilityGranted()) return "Allow Accessibility above, then choose which apps to orvo away.";
  if (model_->isScanning()) return "This usually takes a moment.";
  return eitherText(model_->searchText().empty(), platform_.words.nothingFound,
                    "Try a different app name or clear your search.");
}

std::string OrvoView::actionTitle() const {
  if (model_->state() == BarState::applying) return "Updating your menu bar…";
  const std::size_t count = model_->selectedCount();
  return std::to_string(count) + " app" + (count == 1 ? "" : "s") + " selected to hide";
}

std::string OrvoView::actionHint() const {
  if (!model_->canBeManaged()) return platform_.words.unsupportedHint;
  if (!model_->nativeMenuBarReady) return "Open the Applications copy to enable hiding.";
  if (!model_->accessibilityGranted()) return "Allow Accessibility to get started.";
  if (model_->isConcealing()) return "Click the left arrow to bring your icons back.";
  if (model_->selectedCount() == 0) return "Choose Hide next to an app to get started.";
  return eitherText(model_->canHide(), "Hiding an icon keeps its app running.", platform_.words.noControlsHint);
}

// Without a label the symbol stands alone.
OrvoView::Value OrvoView::primaryButton() const {
  if (!model_->isConcealing()) {
    return {{"label", "Hide selected"},
            {"symbol", "chevron.right"},
            {"accessibilityLabel", "Hide selected icons"},
            {"toolTip", "Hide selected icons"},
            {"enabled", model_->canHide()}};
  }
  return {{"label", ""},
          {"symbol", "chevron.left"},
          {"accessibilityLabel", "Reveal hidden icons"},
          {"toolTip", std::string("Reveal hidden icons · ") + platform_.words.shortcut},
          {"enabled", true}};
}

void OrvoView::applicationIcon(std::int32_t pid, int pixels, ApplicationIcons::Answer answer) const {
  platform_.applicationIcons.icon(pid, pixels, std::move(answer));
}

void OrvoView::addBehaviorPage(Value& all) const {
  all["launchAtLogin"] = model_->launchAtLogin();
  all["shortcutDetail"] =
      eitherText(model_->shortcutAvailable(), "Use this shortcut to hide or reveal your selected apps.",
                 "This shortcut is in use. Orvo’s menu bar arrow is still available.");
  for (const auto& [text, seconds] : rehideOptions) all["rehideOptions"].push_back(text);
  const auto option = rehideOption(model_->preferences().autoRehideSeconds);
  all["rehideOption"] = option ? static_cast<int>(*option) : -1;
  all["rehideText"] = rehideText();
  all["systemControlsCard"] =
      informationCard("System controls stay within reach", platform_.words.systemControls, "cursorarrow.click");
}

// What the closed picker shows; a stored delay without an option is told in its own words.
std::string OrvoView::rehideText() const {
  const std::int64_t seconds = model_->preferences().autoRehideSeconds;
  if (const auto option = rehideOption(seconds)) return rehideOptions.at(*option).first;
  if (seconds < 1) return rehideOptions.front().first;
  return "After " + std::to_string(seconds) + (seconds == 1 ? " second" : " seconds");
}

void OrvoView::chooseRehideOption(std::size_t option) {
  OrvoPreferences preferences = model_->preferences();
  preferences.autoRehideSeconds = rehideOptions.at(option).second;
  model_->setPreferences(std::move(preferences));
}

void OrvoView::addAboutPage(Value& all) const {
  all["diagnostics"] = diagnostics();
  all["copyButton"] = copiedDiagnostics() ? label("checkmark", "Copied") : label("doc.on.doc", "Copy system details");
  all["privacyCard"] = informationCard(
      platform_.words.choicesStayHere,
      "Orvo needs no account and uses no analytics or screen recording. Your visibility choices are saved locally.",
      "lock.shield");
  for (const Link& link : links()) all["linkLabels"].push_back(link.label);
}

OrvoView::Value OrvoView::diagnostics() const {
  const auto row = [](const char* title, bool ready, const char* whenReady, const char* whenNot) {
    return diagnosticRow(title, eitherText(ready, whenReady, whenNot), ready);
  };
  return {diagnosticRow(platform_.words.system, platform_.processInfo.operatingSystemVersionString(), std::nullopt),
          row("Installed application", model_->nativeMenuBarReady, "Ready", "Open from Applications"),
          row("Menu bar compatibility", model_->canBeManaged(), "Available", "Unavailable"),
          row("Accessibility", model_->accessibilityGranted(), "Enabled", "Permission required"),
          row("System controls", model_->systemClickProtection(), "Ready", "Not ready — refresh icons"),
          row("Keyboard shortcut", model_->shortcutAvailable(), "Ready", "In use by another app")};
}

std::string OrvoView::diagnosticsText() const {
  return "Orvo " + version() + '\n' + platform_.words.system + ": " +
         platform_.processInfo.operatingSystemVersionString() +
         "\nInstalled application: " + eitherText(model_->nativeMenuBarReady, "ready", "not ready") +
         "\nMenu bar compatibility: " + eitherText(model_->canBeManaged(), "available", "unavailable") +
         "\nAccessibility: " + eitherText(model_->accessibilityGranted(), "enabled", "not enabled") +
         "\nSystem controls: " + eitherText(model_->systemClickProtection(), "ready", "not ready") +
         "\nKeyboard shortcut: " + eitherText(model_->shortcutAvailable(), "ready", "unavailable");
}

void OrvoView::copyDiagnostics() {
  platform_.pasteboard.clearContents();
  platform_.pasteboard.setString(diagnosticsText());
  copiedDiagnostics = true;
  platform_.mainQueue.runAfter(copiedDuration, [weak = std::weak_ptr(self_)] {
    if (const auto self = weak.lock()) (*self)->copiedDiagnostics = false;
  });
}

std::array<OrvoView::Link, 2> OrvoView::links() const {
  return {{{infoText("OrvoProjectName", "How Orvo is built"), linkAddress("OrvoProjectAddress")},
           {platform_.words.compatibilityResearch, linkAddress("OrvoResearchAddress")}}};
}

std::string OrvoView::linkAddress(const char* key) const {
  const std::string address = infoText(key, "");
  const bool isWhole = address.find("://") != std::string::npos;
  return isWhole ? address : fileURL(platform_.bundle.path() + '/' + address, false);
}

void OrvoView::openLink(std::size_t link) {
  const Link pressed = links().at(link);
  open(page(), pressed.label + " (" + pressed.address + ")", {pressed.address});
}

void OrvoView::open(Page from, const std::string& name, std::vector<std::string> places) {
  notice_ = std::nullopt;
  const std::string place = places.front();
  places.erase(places.begin());
  platform_.workspace.openURL(place, [weak = std::weak_ptr(self_), from, name, places = std::move(places)] {
    const auto self = weak.lock();
    if (!self) return;
    places.empty() ? (*self)->sayUnopened(from, name) : (*self)->open(from, name, places);
  });
}

void OrvoView::sayUnopened(Page from, const std::string& name) {
  if (const char* const start = platform_.words.couldNotOpen)
    notice_ = Notice{from, start + name + '.', situation(from)};
}

}  // namespace orvo
