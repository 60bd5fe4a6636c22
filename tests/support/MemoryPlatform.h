// A whole platform in memory, over which the real bridge, scanner and relay run. The thread that makes it
// is the main thread; one at a time, since the bridge knows one framework. Whoever was handed `platform`
// goes first. The plain services record what they were told and answer what the test sets.
#pragma once

#include "bridge/FrameworkEntry.h"
#include "platform/Application.h"
#include "platform/ApplicationIcons.h"
#include "platform/Bundle.h"
#include "platform/FileSystem.h"
#include "platform/HotKeys.h"
#include "platform/LocalizedText.h"
#include "platform/LoginItem.h"
#include "platform/Pasteboard.h"
#include "platform/Platform.h"
#include "platform/ProcessInfo.h"
#include "platform/StatusBar.h"
#include "platform/UserDefaults.h"
#include "platform/Window.h"
#include "platform/Words.h"
#include "platform/Workspace.h"
#include "support/ManualExecutor.h"
#include "support/ManualMainQueue.h"
#include "support/MemoryAccessibility.h"
#include "support/MemoryEventTaps.h"
#include "support/MemoryFramework.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace orvo {

// What a map holds under a key, if anything.
template <typename Map>
auto found(const Map& map, std::string_view key) {
  const auto at = map.find(key);
  return at == map.end() ? std::nullopt : std::optional(at->second);
}

// Notifications are posted by hand on its center.
struct MemoryWorkspace : Workspace {
  // In the system's order.
  std::vector<RunningApplication> running;
  std::map<std::string, std::string, std::less<>> registered;
  std::vector<std::string> openedURLs;
  bool opensNothing = false;
  // Other programs that hide icons.
  std::vector<std::string> others;
  NotificationCenter center;

  void launch(const std::string& bundle, std::int32_t pid) { running.push_back({bundle, pid, {}, {}}); }
  void quit(const std::string& bundle) {
    std::erase_if(running, [&](const auto& each) { return each.bundleIdentifier == bundle; });
  }
  std::vector<RunningApplication> runningApplications() const override { return running; }
  std::optional<RunningApplication> runningApplication(std::int32_t pid) const override {
    const auto at =
        std::find_if(running.begin(), running.end(), [=](auto& each) { return each.processIdentifier == pid; });
    return at == running.end() ? std::nullopt : std::optional(*at);
  }
  std::vector<RunningApplication> runningApplications(const std::string& bundle) const override {
    std::vector<RunningApplication> all = running;
    std::erase_if(all, [&](const auto& each) { return each.bundleIdentifier != bundle; });
    return all;
  }
  std::optional<std::string> applicationPath(const std::string& bundle) const override {
    return found(registered, bundle);
  }
  void openURL(const std::string& url, std::function<void()> failed) override {
    openedURLs.push_back(url);
    if (opensNothing && failed) failed();
  }
  std::vector<std::string> concealers() const override { return others; }
  void endConcealments() override { tellOthers({}); }
  void tellOthers(const std::vector<std::string>& names) {
    others = names;
    center.post(Notification::concealersChanged);
  }
  NotificationCenter& notificationCenter() override { return center; }
};

// Counts what is held, and ends the process where more is released than was had. Refuses on demand.
struct MemoryHotKeys : HotKeys {
  HotKeyStatus registerStatus = hotKeyNoError;
  bool available = true;
  int hotKeys = 0;
  EventHandlerFunction function = nullptr;
  void* userData = nullptr;

  // Presses any registered combination.
  void press() const { function(userData); }
  HotKeyStatus installEventHandler(EventHandlerFunction newFunction, EventTypeSpec, void* newUserData,
                                   EventHandlerRef& handler) override {
    function = newFunction, userData = newUserData, handler = EventHandlerRef{1};
    return hotKeyNoError;
  }
  HotKeyStatus registerEventHotKey(std::uint32_t, std::uint32_t, HotKeyID, std::uint32_t, HotKeyRef& key) override {
    if (registerStatus == hotKeyNoError) ++hotKeys, key = HotKeyRef{1};
    return registerStatus;
  }
  bool isAvailable(HotKeyRef) const override { return available; }
  void unregisterEventHotKey(HotKeyRef) override {
    if (--hotKeys < 0) std::abort();
  }
  void removeEventHandler(EventHandlerRef) override { function = nullptr; }
};

// Case-insensitive in ASCII, runs of digits by their value.
struct AsciiText : LocalizedText {
  int standardCompare(std::string_view left, std::string_view right) const override {
    return strverscmp(lower(left).c_str(), lower(right).c_str());
  }
  bool caseInsensitiveContains(std::string_view text, std::string_view needle) const override {
    return !needle.empty() && lower(text).find(lower(needle)) != std::string::npos;
  }
  static std::string lower(std::string_view text) {
    std::string all(text);
    for (char& each : all) each = each >= 'A' && each <= 'Z' ? static_cast<char>(each - 'A' + 'a') : each;
    return all;
  }
};

struct MemoryUserDefaults : UserDefaults {
  std::map<std::string, Bytes, std::less<>> datas;
  std::map<std::string, bool, std::less<>> booleans;
  std::optional<std::string> failure;

  std::optional<Bytes> data(std::string_view key) const override { return found(datas, key); }
  void setData(std::string_view key, const Bytes& value) override { datas[std::string(key)] = value; }
  std::optional<std::string> storageFailure() const override { return failure; }
  bool boolean(std::string_view key) const override { return found(booleans, key).value_or(false); }
  void setBoolean(std::string_view key, bool value) override { booleans[std::string(key)] = value; }
};

struct MemoryBundle : Bundle {
  std::optional<std::string> bundleIdentifier = "local.orvo.Orvo";
  std::map<std::string, InfoValue, std::less<>> info{{"CFBundleShortVersionString", std::string("0.2.0")}};
  std::string bundlePath = "/Applications/Orvo.app";

  std::optional<std::string> identifier() const override { return bundleIdentifier; }
  std::optional<InfoValue> infoValue(std::string_view key) const override { return found(info, key); }
  std::string path() const override { return bundlePath; }
};

struct MemoryProcessInfo : ProcessInfo {
  std::vector<std::string> argumentList{"/Applications/Orvo.app/bin/orvo"};

  std::vector<std::string> arguments() const override { return argumentList; }
  std::int32_t processIdentifier() const override { return 1000; }
  std::string version = "Version 27.0 (Build 26A100)";

  std::string operatingSystemVersionString() const override { return version; }
};

// One symbolic link: "/link" leads to the Applications folder.
struct MemoryFileSystem : FileSystem {
  std::string homeDirectoryForCurrentUser() const override { return "/home/user"; }
  std::string resolvingSymbolicLinks(const std::string& path) const override {
    return path.starts_with("/link/") ? "/Applications" + path.substr(5) : path;
  }
  std::string standardizing(const std::string& path) const override {
    return std::filesystem::path(path).lexically_normal().string();
  }
};

struct MemoryLoginItem : LoginItem {
  LoginItemStatus current = LoginItemStatus::notRegistered;
  // What a change leads to that succeeds; absent for what it asks for.
  std::optional<LoginItemStatus> after;
  std::optional<std::string> failure;
  int settingsOpened = 0;

  std::optional<std::string> registerItem() override { return change(LoginItemStatus::enabled); }
  std::optional<std::string> unregisterItem() override { return change(LoginItemStatus::notRegistered); }
  LoginItemStatus status() const override { return current; }
  void openSystemSettingsLoginItems() override { ++settingsOpened; }
  std::optional<std::string> change(LoginItemStatus asked) {
    if (!failure) current = after.value_or(asked);
    return failure;
  }
};

// Without an event loop: `run` sends the launch message and returns.
struct MemoryApplication : Application {
  ApplicationDelegate* delegate = nullptr;
  std::optional<ActivationPolicy> policy;
  std::optional<Menu> mainMenu;
  std::optional<EventType> currentEvent;
  int runs = 0;
  int terminations = 0;
  int activations = 0;
  NotificationCenter center;

  void setDelegate(ApplicationDelegate* newDelegate) override { delegate = newDelegate; }
  void run() override { ++runs, delegate->applicationDidFinishLaunching(); }
  void terminate() override {
    if (++terminations == 1) delegate->applicationWillTerminate();
  }
  void setActivationPolicy(ActivationPolicy newPolicy) override { policy = newPolicy; }
  void setMainMenu(const Menu& menu) override { mainMenu = menu; }
  void activateIgnoringOtherApps() override { ++activations; }
  std::optional<EventType> currentEventType() const override { return currentEvent; }
  NotificationCenter& notificationCenter() override { return center; }
};

// Pops no menu up, but keeps it until the test clears it.
struct MemoryStatusBar : StatusBar, StatusItemButton {
  bool grantsItems = true;
  bool grantsButtons = true;
  // Has as many owners as there are items, and one more.
  std::shared_ptr<void> items = std::make_shared<int>();
  std::string image, toolTip;
  std::function<void()> action;
  std::optional<Menu> menu;
  Point menuPoint;

  struct Item : StatusItem {
    explicit Item(MemoryStatusBar& in) : bar(in), alive(in.items) {}
    void setAutosaveName(const std::string&) override {}
    void setBehavior(std::uint32_t) override {}
    void setVisible(bool) override {}
    StatusItemButton* button() override { return bar.grantsButtons ? &bar : nullptr; }
    MemoryStatusBar& bar;
    std::shared_ptr<void> alive;
  };
  std::unique_ptr<StatusItem> statusItem(double) override {
    return grantsItems ? std::make_unique<Item>(*this) : nullptr;
  }
  void setAction(std::function<void()> newAction, std::uint32_t) override { action = std::move(newAction); }
  void setAccessibilityLabel(const std::string&) override {}
  void setAccessibilityIdentifier(const std::string&) override {}
  void setImage(const std::string& symbolName, const std::string&) override { image = symbolName; }
  void setToolTip(const std::string& text) override { toolTip = text; }
  Rect bounds() const override { return {0, 3, 24, 22}; }
  void popUpMenu(const Menu& newMenu, Point point) override { menu = newMenu, menuPoint = point; }
};

struct MemoryWindows : Windows {
  bool grantsWindows = true;
  // Makes windows in place of the recorder, where it is set.
  std::function<std::unique_ptr<Window>(const WindowDescription&, WindowContent&)> maker;
  // Of the newest window; null before there is one.
  WindowContent* content = nullptr;
  int made = 0;
  int centered = 0;
  int shown = 0;
  // Has as many owners as there are windows, and one more.
  std::shared_ptr<void> open = std::make_shared<int>();

  struct Recorder : Window {
    explicit Recorder(MemoryWindows& all) : windows(all), alive(all.open) { ++windows.made; }
    void center() override { ++windows.centered; }
    void makeKeyAndOrderFront() override { ++windows.shown; }
    MemoryWindows& windows;
    std::shared_ptr<void> alive;
  };
  std::unique_ptr<Window> make(const WindowDescription& description, WindowContent& newContent) override {
    if (!grantsWindows) return nullptr;
    content = &newContent;
    return maker ? maker(description, newContent) : std::make_unique<Recorder>(*this);
  }
};

// Refuses a text, as the real one does, unless it was cleared first.
struct MemoryPasteboard : Pasteboard {
  std::optional<std::string> text = "what was copied before";

  void clearContents() override { text.reset(); }
  void setString(const std::string& newText) override { text = text.value_or(newText); }
};

// Keeps every request for a picture until the test answers it.
struct MemoryApplicationIcons : ApplicationIcons {
  struct Request {
    std::int32_t processIdentifier;
    int size;
    Answer answer;
  };
  std::vector<Request> requests;
  void icon(std::int32_t pid, int size, Answer answer) override { requests.push_back({pid, size, std::move(answer)}); }
};

struct NamedApp {
  std::string bundleID;
  std::string name;
};

class MemoryPlatform {
 public:
  // Where the clock of `showItems` stands.
  static constexpr Rect clockFrame{1800, 0, 60, 24};

  static constexpr std::int32_t hostPid = 10;
  std::int32_t freePid = 2000;

  MemoryPlatform() {
    setConcealmentFramework(&framework);
    workspace.launch(std::string(menuBarHostBundle), hostPid);
  }
  MemoryPlatform(const MemoryPlatform&) = delete;
  MemoryPlatform& operator=(const MemoryPlatform&) = delete;
  ~MemoryPlatform() { setConcealmentFramework(nullptr); }

  // From now on the menu bar shows a clock and the items of these applications, which are launched, from process
  // 2000 on, if they do not run yet. Posts no notification.
  void showItems(const std::vector<NamedApp>& apps) {
    std::vector children{element(hostPid)->withIdentifier("com.apple.menuextra.clock")->withFrame(clockFrame)};
    for (const NamedApp& app : apps) {
      if (workspace.runningApplications(app.bundleID).empty()) workspace.launch(app.bundleID, freePid++);
      const auto running = std::ranges::find(workspace.running, app.bundleID, &RunningApplication::bundleIdentifier);
      running->localizedName = app.name;
      children.push_back(element(running->processIdentifier));
    }
    accessibility.trees[hostPid] = element(hostPid)->withChildren(children);
  }
  // Runs scans and posted tasks until none is left; the clock stands still.
  void settle() {
    while (scanExecutor.runOne() || mainQueue.runOne()) {
    }
  }

  ManualMainQueue mainQueue;
  ManualExecutor scanExecutor;
  MemoryUserDefaults userDefaults;
  MemoryBundle bundle;
  MemoryProcessInfo processInfo;
  MemoryFileSystem fileSystem;
  MemoryWorkspace workspace;
  MemoryAccessibility accessibility;
  MemoryEventTaps eventTaps;
  MemoryHotKeys hotKeys;
  MemoryLoginItem loginItem;
  AsciiText localizedText;
  MemoryApplication application;
  MemoryStatusBar statusBar;
  MemoryWindows windows;
  MemoryPasteboard pasteboard;
  MemoryApplicationIcons applicationIcons;
  MemoryFramework framework;
  Words words = macWords;

  const Platform platform{mainQueue,   scanExecutor,  userDefaults, bundle,     processInfo,      fileSystem,
                          workspace,   accessibility, eventTaps,    hotKeys,    loginItem,        localizedText,
                          application, statusBar,     windows,      pasteboard, applicationIcons, words};
};

}  // namespace orvo
