#include "ui/OrvoView.h"

#include "model/OrvoModel.h"
#include "platform/Bundle.h"
#include "platform/FileSystem.h"
#include "platform/MainQueue.h"
#include "platform/Pasteboard.h"
#include "platform/ProcessInfo.h"
#include "platform/Words.h"
#include "platform/Workspace.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace orvo {

namespace {

constexpr const char* fallbackVersion = "0.2.0";
constexpr const char* applicationsFolder = "/Applications";

const std::pair<const char*, const char*> fixedTexts[] = {
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

OrvoView::SetupStep setupStep(const std::string& title, const std::string& number, bool complete) {
  return {title, number, complete, title + ": " + (complete ? "complete" : "required")};
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
  modelToken_ = model_->willChange.observe([this] { willChange.send(); });
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

std::array<OrvoView::Label, 3> OrvoView::pages() const {
  const auto label = [](Page one) { return Label{std::string(symbol(one)), std::string(rawValue(one))}; };
  return {label(Page::icons), label(Page::behavior), label(Page::about)};
}

std::string OrvoView::version() const { return infoText("CFBundleShortVersionString", fallbackVersion); }

std::string OrvoView::infoText(const char* key, const char* fallback) const {
  const std::optional<InfoValue> value = platform_.bundle.infoValue(key);
  const std::string* text = value ? std::get_if<std::string>(&*value) : nullptr;
  return text != nullptr ? *text : fallback;
}

std::map<std::string, std::string> OrvoView::texts() const {
  std::map<std::string, std::string> texts(std::begin(fixedTexts), std::end(fixedTexts));
  const Words& words = platform_.words;
  texts["shortcut"] = words.spokenShortcut;
  texts["shortcutSigns"] = words.shortcutSigns;
  texts["onThisComputer"] = words.onThisComputer;
  texts["builtForTitle"] = words.builtForTitle;
  texts["builtForDetail"] = words.builtForDetail;
  texts["versionLine"] = "Orvo " + version();
  texts["aboutVersion"] = "Version " + version();
  return texts;
}

OrvoView::Label OrvoView::statusLine() const {
  if (model_->state() == BarState::hidden) return {"chevron.left", "Icons orvoed away"};
  return {"checkmark.circle", "Apps keep running"};
}

OrvoView::StateBadge OrvoView::stateBadge() const {
  switch (model_->state()) {
    case BarState::applying:
      return {true, false, "Updating"};
    case BarState::hidden:
      return {false, true, "Orvoed away"};
    case BarState::visible:
      break;
  }
  if (model_->isConcealing()) return {false, true, "Hidden"};
  return {false, false, "All visible"};
}

std::optional<std::string> OrvoView::message() const {
  if (notice_() && notice_()->page == page() && notice_()->over == model_->message()) return notice_()->text;
  if (page() == Page::about) return std::nullopt;
  const std::vector<std::string>& concealers = model_->concealers();
  if (concealers.empty()) return model_->message();
  const std::string others = concealers.size() == 1 ? " hides" : " and other programs hide";
  return concealers.front() + others + " icons. Click the arrow to show them.";
}

OrvoView::Guidance OrvoView::guidance() const {
  if (!model_->backendAvailable) return Guidance::unsupported;
  return model_->nativeMenuBarReady && model_->accessibilityGranted() ? Guidance::revealGuide : Guidance::setup;
}

OrvoView::InformationCard OrvoView::unsupportedCard() const {
  return {platform_.words.unsupportedTitle, platform_.words.unsupportedDetail, "exclamationmark.triangle", true};
}

std::array<OrvoView::SetupStep, 2> OrvoView::setupSteps() const {
  return {setupStep("Install in Applications", "1", model_->nativeMenuBarReady),
          setupStep("Allow Accessibility", "2", model_->accessibilityGranted())};
}

OrvoView::SetupAdvice OrvoView::setupAdvice() const {
  if (!model_->nativeMenuBarReady) {
    return {"Give Orvo a permanent home",
            "Move Orvo.app to Applications, then open that copy. This keeps its menu bar arrow available.",
            "Open Applications"};
  }
  return {"One permission, then you’re ready", platform_.words.accessibilityAdvice, "Open Settings…"};
}

void OrvoView::performSetupAction() {
  if (model_->nativeMenuBarReady) {
    model_->requestAccessibility();
  } else {
    const std::string own = platform_.fileSystem.homeDirectoryForCurrentUser() + applicationsFolder;
    open("Applications", {fileURL(applicationsFolder, true), fileURL(own, true)});
  }
}

bool OrvoView::shortcutAvailable() const { return model_->shortcutAvailable(); }

std::string OrvoView::searchText() const { return model_->searchText(); }

void OrvoView::setSearchText(const std::string& text) { model_->searchText = text; }

void OrvoView::clearSearch() { model_->searchText = std::string(); }

bool OrvoView::searchEnabled() const { return model_->accessibilityGranted(); }

bool OrvoView::offersClearSearch() const { return !model_->searchText().empty(); }

bool OrvoView::isScanning() const { return model_->isScanning(); }

bool OrvoView::refreshEnabled() const { return model_->accessibilityGranted(); }

void OrvoView::refresh() { model_->refresh(); }

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

bool OrvoView::pickersEnabled() const { return model_->state() != BarState::applying; }

void OrvoView::choose(IconRule rule, const std::string& bundleID) { model_->setRule(rule, bundleID); }

OrvoView::EmptyState OrvoView::emptyState() const {
  const bool granted = model_->accessibilityGranted();
  return {eitherText(granted, "magnifyingglass", "hand.raised"), granted && offersClearSearch()};
}

std::string OrvoView::emptyTitle() const {
  if (!model_->accessibilityGranted()) return "Your apps will appear here";
  if (model_->isScanning()) return "Finding menu bar icons…";
  return eitherText(offersClearSearch(), "No matching apps", "No app icons found");
}

std::string OrvoView::emptyDetail() const {
  if (!model_->accessibilityGranted()) return "Allow Accessibility above, then choose which apps to orvo away.";
  if (model_->isScanning()) return "This usually takes a moment.";
  return eitherText(offersClearSearch(), "Try a different app name or clear your search.",
                    platform_.words.nothingFound);
}

bool OrvoView::showsListFooter() const { return model_->accessibilityGranted() && !model_->apps().empty(); }

std::string OrvoView::listCount() const {
  return std::to_string(model_->filteredApps().size()) + " of " + std::to_string(model_->apps().size()) + " apps";
}

std::string OrvoView::actionTitle() const {
  if (model_->state() == BarState::applying) return "Updating your menu bar…";
  const std::size_t count = model_->selectedCount();
  return std::to_string(count) + " app" + (count == 1 ? "" : "s") + " selected to hide";
}

std::string OrvoView::actionHint() const {
  if (!model_->backendAvailable) return platform_.words.unsupportedHint;
  if (!model_->nativeMenuBarReady) return "Open the Applications copy to enable hiding.";
  if (!model_->accessibilityGranted()) return "Allow Accessibility to get started.";
  if (model_->isConcealing()) return "Click the left arrow to bring your icons back.";
  if (model_->selectedCount() == 0) return "Choose Hide next to an app to get started.";
  return eitherText(model_->canHide(), "Hiding an icon keeps its app running.", platform_.words.noControlsHint);
}

OrvoView::PrimaryButton OrvoView::primaryButton() const {
  if (!model_->isConcealing()) {
    return {"Hide selected", "chevron.right", "Hide selected icons", "Hide selected icons", model_->canHide()};
  }
  return {"", "chevron.left", "Reveal hidden icons", std::string("Reveal hidden icons · ") + platform_.words.shortcut,
          true};
}

void OrvoView::performPrimaryAction() { model_->toggle(); }

void OrvoView::applicationIcon(std::int32_t pid, int pixels, ApplicationIcons::Answer answer) const {
  platform_.applicationIcons.icon(pid, pixels, std::move(answer));
}

bool OrvoView::launchAtLogin() const { return model_->launchAtLogin(); }

void OrvoView::setLaunchAtLogin(bool enabled) { model_->setLoginItem(enabled); }

std::string OrvoView::shortcutDetail() const {
  return eitherText(model_->shortcutAvailable(), "Use this shortcut to hide or reveal your selected apps.",
                    "This shortcut is in use. Orvo’s menu bar arrow is still available.");
}

const std::array<OrvoView::RehideOption, 4>& OrvoView::rehideOptions() const {
  static const std::array<RehideOption, 4> options{
      {{"Never", 0}, {"After 5 seconds", 5}, {"After 10 seconds", 10}, {"After 30 seconds", 30}}};
  return options;
}

std::optional<std::size_t> OrvoView::rehideOption() const {
  const auto& options = rehideOptions();
  const auto* found = std::ranges::find(options, model_->preferences().autoRehideSeconds, &RehideOption::seconds);
  if (found == options.end()) return std::nullopt;
  return static_cast<std::size_t>(found - options.begin());
}

std::string OrvoView::rehideText() const {
  if (const auto option = rehideOption()) return rehideOptions().at(*option).text;
  const std::int64_t seconds = model_->preferences().autoRehideSeconds;
  if (seconds < 1) return rehideOptions().front().text;
  return "After " + std::to_string(seconds) + (seconds == 1 ? " second" : " seconds");
}

void OrvoView::chooseRehideOption(std::size_t option) {
  OrvoPreferences preferences = model_->preferences();
  preferences.autoRehideSeconds = rehideOptions().at(option).seconds;
  model_->setPreferences(std::move(preferences));
}

OrvoView::InformationCard OrvoView::systemControlsCard() const {
  return {"System controls stay within reach",
          "Clicking a detected clock, Wi-Fi, or other system control reveals your icons before opening it. Your icons "
          "then stay visible until you hide them again.",
          "cursorarrow.click", false};
}

std::vector<OrvoView::DiagnosticRow> OrvoView::diagnostics() const {
  const auto row = [](const char* title, bool ready, const char* whenReady, const char* whenNot) {
    return DiagnosticRow{title, eitherText(ready, whenReady, whenNot), ready};
  };
  return {{platform_.words.system, platform_.processInfo.operatingSystemVersionString(), std::nullopt},
          row("Installed application", model_->nativeMenuBarReady, "Ready", "Open from Applications"),
          row("Menu bar compatibility", model_->backendAvailable, "Available", "Unavailable"),
          row("Accessibility", model_->accessibilityGranted(), "Enabled", "Permission required"),
          row("System controls", model_->systemClickProtection(), "Ready", "Not ready — refresh icons"),
          row("Keyboard shortcut", model_->shortcutAvailable(), "Ready", "In use by another app")};
}

std::string OrvoView::diagnosticsText() const {
  return "Orvo " + version() + '\n' + platform_.words.system + ": " +
         platform_.processInfo.operatingSystemVersionString() +
         "\nInstalled application: " + eitherText(model_->nativeMenuBarReady, "ready", "not ready") +
         "\nMenu bar compatibility: " + eitherText(model_->backendAvailable, "available", "unavailable") +
         "\nAccessibility: " + eitherText(model_->accessibilityGranted(), "enabled", "not enabled") +
         "\nSystem controls: " + eitherText(model_->systemClickProtection(), "ready", "not ready") +
         "\nKeyboard shortcut: " + eitherText(model_->shortcutAvailable(), "ready", "unavailable");
}

OrvoView::Label OrvoView::copyButton() const {
  if (copiedDiagnostics()) return {"checkmark", "Copied"};
  return {"doc.on.doc", "Copy system details"};
}

void OrvoView::copyDiagnostics() {
  platform_.pasteboard.clearContents();
  platform_.pasteboard.setString(diagnosticsText());
  copiedDiagnostics = true;
  platform_.mainQueue.runAfter(copiedDuration, [weak = std::weak_ptr(self_)] {
    if (const auto self = weak.lock()) (*self)->copiedDiagnostics = false;
  });
}

OrvoView::InformationCard OrvoView::privacyCard() const {
  return {platform_.words.choicesStayHere,
          "Orvo needs no account and uses no analytics or screen recording. Your visibility choices are saved locally.",
          "lock.shield", false};
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
  open(pressed.label + " (" + pressed.address + ")", {pressed.address});
}

void OrvoView::open(const std::string& name, std::vector<std::string> places) {
  notice_ = std::nullopt;
  const std::string place = places.front();
  places.erase(places.begin());
  platform_.workspace.openURL(place, [weak = std::weak_ptr(self_), name, places = std::move(places)] {
    const auto self = weak.lock();
    if (!self) return;
    places.empty() ? (*self)->sayUnopened(name) : (*self)->open(name, places);
  });
}

void OrvoView::sayUnopened(const std::string& name) {
  if (const char* const start = platform_.words.couldNotOpen)
    notice_ = Notice{page(), start + name + '.', model_->message()};
}

}  // namespace orvo
