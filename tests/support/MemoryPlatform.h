// A whole platform in memory, over which the real bridge, scanner and relay run. The thread that makes it is the main
// thread; one at a time, since the bridge knows one framework. Whoever was handed `platform` goes first.
#pragma once

#include "bridge/FrameworkEntry.h"
#include "platform/Accessibility.h"
#include "platform/Application.h"
#include "platform/ApplicationIcons.h"
#include "platform/Bundle.h"
#include "platform/ConcealmentFramework.h"
#include "platform/EventTap.h"
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
#include "support/ManualMainQueue.h"

#include <cstring>
#include <filesystem>
#include <map>
#include <set>

namespace orvo {

auto found(const auto& map, const auto& key) {
  const auto at = map.find(key);
  return at == map.end() ? std::nullopt : std::optional(at->second);
}

// An attribute that was not given fails to be read; one of another kind is given as it is.
struct MemoryElement : AccessibilityElement, std::enable_shared_from_this<MemoryElement> {
  explicit MemoryElement(std::optional<std::int32_t> process) : pid(process) {}

  std::optional<std::int32_t> pid;
  std::map<std::string, AttributeValue, std::less<>> attributes;
  std::optional<float> messagingTimeout;

  std::shared_ptr<MemoryElement> with(const char* name, AttributeValue value) {
    attributes[name] = std::move(value);
    return shared_from_this();
  }
  std::shared_ptr<MemoryElement> withChildren(const std::vector<std::shared_ptr<MemoryElement>>& children) {
    return with("AXChildren", std::vector<AccessibilityElementRef>(children.begin(), children.end()));
  }

  void setMessagingTimeout(float seconds) override { messagingTimeout = seconds; }
  std::optional<std::int32_t> processIdentifier() override { return pid; }
  std::optional<AttributeValue> copyAttributeValue(std::string_view name) override { return found(attributes, name); }
};

// Bare; without a process, the request for it fails.
inline auto element(std::optional<std::int32_t> pid) { return std::make_shared<MemoryElement>(pid); }

struct MemoryAccessibility : Accessibility {
  bool trusted = true;
  int prompts = 0;
  std::map<std::int32_t, AccessibilityElementRef> trees;
  // Processes whose application element was asked for, in order.
  std::vector<std::int32_t> asked;

  bool isProcessTrusted() const override { return trusted; }
  bool isProcessTrusted(bool prompt) override { return prompts += prompt ? 1 : 0, trusted; }
  AccessibilityElementRef applicationElement(std::int32_t pid) override {
    asked.push_back(pid);
    return found(trees, pid).value_or(element(pid));
  }
};

struct MemoryWorkspace : Workspace {
  std::vector<RunningApplication> running;
  std::vector<std::string> openedURLs, others;
  bool opensNothing = false, managedElsewhere = false;
  TakenOver takenOver;
  NotificationCenter center;

  void launch(const std::string& bundle, std::int32_t pid) { running.push_back({bundle, pid, {}, {}}); }
  void quit(const std::string& bundle) {
    std::erase_if(running, [&](const auto& each) { return each.bundleIdentifier == bundle; });
  }
  std::vector<RunningApplication> runningApplications() const override { return running; }
  std::optional<RunningApplication> runningApplication(std::int32_t pid) const override {
    const auto at = std::ranges::find(running, pid, &RunningApplication::processIdentifier);
    return at == running.end() ? std::nullopt : std::optional(*at);
  }
  std::vector<RunningApplication> runningApplications(const std::string& bundle) const override {
    std::vector<RunningApplication> all = running;
    std::erase_if(all, [&](const auto& each) { return each.bundleIdentifier != bundle; });
    return all;
  }
  std::optional<std::string> applicationPath(const std::string&) const override { return {}; }
  void openURL(const std::string& url, std::function<void()> failed) override {
    openedURLs.push_back(url);
    if (opensNothing && failed) failed();
  }
  std::vector<std::string> concealers() const override { return others; }
  void endConcealments() override { tellOthers({}); }
  bool areItemsManagedElsewhere() const override { return managedElsewhere; }
  void takeOverItems(const TakenOver& done) override { takenOver = done; }
  void tellOthers(const std::vector<std::string>& names, bool manage = false) {
    others = names, managedElsewhere = manage;
    center.post(Notification::concealersChanged);
  }
  NotificationCenter& notificationCenter() override { return center; }
};

struct MemoryEvent : Event {
  MemoryEvent(EventType kind, Point location, int number = 0) : type(kind), point(location), serial(number) {}

  EventType type;
  Point point;
  int serial;  // travels with copies
  std::int64_t userData = 0;
  bool copyFails = false;

  Point location() const override { return point; }
  std::unique_ptr<Event> copy() const override { return copyFails ? nullptr : std::make_unique<MemoryEvent>(*this); }
  std::int64_t integerValueField(std::uint32_t key) const override { return key == eventSourceUserData ? userData : 0; }
  void setIntegerValueField(std::uint32_t field, std::int64_t value) override {
    if (field == eventSourceUserData) userData = value;
  }
};

// One event tap over a stream that a test feeds event by event. Main thread only, as the real ones.
struct MemoryEventTaps : EventTaps {
  bool creationFails = false;
  std::vector<MemoryEvent> posted;
  // Of the newest tap, also after its port has gone.
  EventTapCallback callback = nullptr;
  void* userInfo = nullptr;
  bool enabled = false, valid = false, ended = false;
  std::vector<Rect> regions;

  // Sends one event through the tap: true when the session gets it. A tap that is disabled is not asked. Regions are
  // ignored, as by systems that show every event.
  bool send(MemoryEvent& event) { return !valid || !enabled || callback(event.type, &event, userInfo) != nullptr; }
  bool press(Point point) {
    MemoryEvent down(EventType::leftMouseDown, point);
    return send(down);
  }
  // Takes the tap, if there is one, out of service and tells it so; there is no event to go with it.
  void disable(EventType reason) {
    enabled = false;
    if (valid) callback(reason, nullptr, userInfo);
  }

  struct Port : EventTapPort {
    explicit Port(MemoryEventTaps& of) : taps(of) {}
    ~Port() override { taps.valid = false; }
    bool addToMainRunLoop() override { return true; }
    void removeFromMainRunLoop() override {}
    bool enable() override { return taps.enabled = !taps.ended; }
    void invalidate() override { taps.valid = false; }
    void setRegionsOfInterest(const std::vector<Rect>& newRegions) override { taps.regions = newRegions; }
    MemoryEventTaps& taps;
  };
  std::unique_ptr<EventTapPort> create(EventTapLocation, EventTapPlacement, EventTapOptions, std::uint64_t,
                                       EventTapCallback newCallback, void* newUserInfo) override {
    if (creationFails) return nullptr;
    callback = newCallback, userInfo = newUserInfo;
    enabled = ended = false, valid = true, regions.clear();
    return std::make_unique<Port>(*this);
  }
  void post(EventTapLocation, const Event& sent) override { posted.push_back(dynamic_cast<const MemoryEvent&>(sent)); }
};

struct MemoryHotKeys : HotKeys {
  HotKeyStatus registerStatus = hotKeyNoError;
  bool available = true;
  int hotKeys = 0;
  EventHandlerFunction function = nullptr;
  void* userData = nullptr;

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
  void unregisterEventHotKey(HotKeyRef) override { --hotKeys; }
  void removeEventHandler(EventHandlerRef) override { function = nullptr; }
};

struct AsciiText : LocalizedText {
  int standardCompare(std::string_view left, std::string_view right) const override {
    return strcasecmp(std::string(left).c_str(), std::string(right).c_str());
  }
  bool caseInsensitiveContains(std::string_view text, std::string_view needle) const override {
    return !needle.empty() && strcasestr(std::string(text).c_str(), std::string(needle).c_str()) != nullptr;
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

// The installed copy, its process and where it lies. One symbolic link: "/link" leads to the Applications folder.
struct MemoryBundle : Bundle, ProcessInfo, FileSystem {
  std::string bundlePath = "/Applications/Orvo.app", systemVersion = "Version 27.0 (Build 26A100)";

  std::optional<std::string> identifier() const override { return "local.orvo.Orvo"; }
  std::optional<std::string> infoText(std::string_view key) const override {
    return key == "CFBundleShortVersionString" ? std::optional<std::string>("0.2.0") : std::nullopt;
  }
  std::string path() const override { return bundlePath; }
  std::vector<std::string> arguments() const override { return {}; }
  std::int32_t processIdentifier() const override { return 1000; }
  std::string operatingSystemVersionString() const override { return systemVersion; }
  std::string homeDirectoryForCurrentUser() const override { return "/home/user"; }
  std::string resolving(const std::string& at) const override {
    const std::filesystem::path target = at.starts_with("/link/") ? "/Applications" + at.substr(5) : at;
    return target.lexically_normal().string();
  }
};

struct MemoryLoginItem : LoginItem {
  LoginItemStatus current = LoginItemStatus::notRegistered;
  // What a change leads to that succeeds; absent for what it asks for.
  std::optional<LoginItemStatus> after;
  std::optional<std::string> failure;
  int settingsOpened = 0;

  LoginItemStatus status() const override { return current; }
  void openSystemSettingsLoginItems() override { ++settingsOpened; }
  std::optional<std::string> setRegistered(bool registered) override {
    if (!failure) current = after.value_or(registered ? LoginItemStatus::enabled : LoginItemStatus::notRegistered);
    return failure;
  }
};

// Without an event loop: `run` sends the launch message and returns.
struct MemoryApplication : Application {
  ApplicationDelegate* delegate = nullptr;
  std::optional<EventType> currentEvent;
  int terminations = 0;
  NotificationCenter center;

  void setDelegate(ApplicationDelegate* newDelegate) override { delegate = newDelegate; }
  void run() override { delegate->applicationDidFinishLaunching(); }
  void terminate() override {
    if (++terminations == 1) delegate->applicationWillTerminate();
  }
  void setActivationPolicy(ActivationPolicy) override {}
  void setMainMenu(const Menu&) override {}
  void activateIgnoringOtherApps() override {}
  std::optional<EventType> currentEventType() const override { return currentEvent; }
  NotificationCenter& notificationCenter() override { return center; }
};

// The bar, its items and their button in one. Pops no menu up, but keeps it until the test clears it.
struct MemoryStatusBar : StatusBar, StatusItemButton {
  bool grantsItems = true, grantsButtons = true;
  std::string image, toolTip;
  std::function<void()> action;
  std::optional<Menu> menu;

  struct Item : StatusItem {
    explicit Item(MemoryStatusBar& in) : bar(in) {}
    void setAutosaveName(const std::string&) override {}
    void setBehavior(std::uint32_t) override {}
    void setVisible(bool) override {}
    StatusItemButton* button() override { return bar.grantsButtons ? &bar : nullptr; }
    MemoryStatusBar& bar;
  };
  std::unique_ptr<StatusItem> statusItem(double) override {
    return grantsItems ? std::make_unique<Item>(*this) : nullptr;
  }
  void setAction(std::function<void()> newAction, std::uint32_t) override { action = std::move(newAction); }
  void setAccessibilityLabel(const std::string&) override {}
  void setAccessibilityIdentifier(const std::string&) override {}
  void setImage(const std::string& symbolName, const std::string&) override { image = symbolName; }
  void setToolTip(const std::string& text) override { toolTip = text; }
  Rect bounds() const override { return {}; }
  void popUpMenu(const Menu& newMenu, Point) override { menu = newMenu; }
};

struct MemoryWindows : Windows {
  bool grantsWindows = true;
  std::function<std::unique_ptr<Window>(const WindowDescription&, WindowContent&)> maker;
  int shown = 0;
  // Has as many owners as there are windows, and one more.
  std::shared_ptr<void> open = std::make_shared<int>();

  struct Recorder : Window {
    explicit Recorder(MemoryWindows& all) : windows(all), alive(all.open) {}
    void center() override {}
    void makeKeyAndOrderFront() override { ++windows.shown; }
    MemoryWindows& windows;
    std::shared_ptr<void> alive;
  };
  std::unique_ptr<Window> make(const WindowDescription& description, WindowContent& content) override {
    if (!grantsWindows) return nullptr;
    return maker ? maker(description, content) : std::make_unique<Recorder>(*this);
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
  std::vector<std::tuple<std::int32_t, int, Answer>> requests;
  void icon(std::int32_t pid, int size, Answer answer) override { requests.emplace_back(pid, size, std::move(answer)); }
};

// An imitation of the concealment framework with faults that a test chooses. Nothing is locked: one thread at a time.
struct MemoryFramework : FrameworkClasses, ConcealmentFramework {
  struct Activation {
    std::vector<std::string> allowedBundleIdentifiers;
    CompletionHandler completion;
    // Expires with the concealment.
    std::weak_ptr<void> concealing;
  };

  // Faults. Names are of classes and messages, and "configuration" and "assertion" of their objects.
  bool loads = true, refuses = false;
  std::set<std::string> missing;
  // Runs at the end of every activation, with its number; may answer at once, or throw.
  std::function<void(std::size_t)> onActivate;
  std::function<void()> onInvalidate;

  std::vector<Activation> activations;
  // Has as many owners as there are assertion and configuration objects, and one more.
  const std::shared_ptr<void> alive = std::make_shared<int>();
  std::size_t liveObjects() const { return static_cast<std::size_t>(alive.use_count()) - 1; }
  std::size_t active() const {
    return static_cast<std::size_t>(
        std::ranges::count_if(activations, [](const Activation& each) { return !each.concealing.expired(); }));
  }
  // Calls a request's completion, on this thread; may be done again, also after the release.
  void answer(std::size_t activation, const std::optional<FrameworkError>& error = std::nullopt) {
    const CompletionHandler completion = activations.at(activation).completion;
    if (completion) completion(error);
  }

  struct Object : FrameworkObject {
    explicit Object(std::shared_ptr<void> token) : alive(std::move(token)) {}
    std::shared_ptr<void> alive;
    // A configuration's.
    std::vector<std::string> bundles;
    // An assertion's, from activation until it is invalidated or goes.
    std::shared_ptr<void> concealment;
  };
  FrameworkClasses* load(const char*) override { return loads ? this : nullptr; }
  // Class objects are opaque to everybody else.
  FrameworkClassRef classNamed(const char* name) override {
    return missing.contains(name) ? nullptr : reinterpret_cast<FrameworkClassRef>(this);
  }
  bool instancesRespondTo(FrameworkClassRef, const char* message) override { return !missing.contains(message); }
  bool respondsTo(const FrameworkObject&, const char*) override { return true; }
  FrameworkObjectRef makeConfiguration(FrameworkClassRef, std::span<const int>,
                                       const std::vector<std::string>& bundles) override {
    const auto made = std::make_shared<Object>(alive);
    made->bundles = bundles;
    return missing.contains("configuration") ? nullptr : made;
  }
  FrameworkObjectRef makeAssertion(FrameworkClassRef) override {
    return missing.contains("assertion") ? nullptr : std::make_shared<Object>(alive);
  }
  void activate(FrameworkObject& assertion, const FrameworkObjectRef& with, CompletionHandler completion) override {
    if (refuses) throw FrameworkException{"broken"};
    auto& concealment = dynamic_cast<Object&>(assertion).concealment = std::make_shared<int>();
    activations.push_back({dynamic_cast<const Object&>(*with).bundles, std::move(completion), concealment});
    if (onActivate) onActivate(activations.size() - 1);
  }
  void invalidate(FrameworkObject& assertion) override {
    if (onInvalidate) onInvalidate();
    dynamic_cast<Object&>(assertion).concealment.reset();
  }
  void log(const std::string&) override {}
};

struct NamedApp {
  std::string bundleID, name;
};

struct MemoryPlatform {
  static constexpr Rect clockFrame{1800, 0, 60, 24};
  static constexpr std::int32_t hostPid = 10;

  MemoryPlatform() {
    setConcealmentFramework(&framework);
    workspace.launch(std::string(menuBarHostBundle), hostPid);
  }
  ~MemoryPlatform() { setConcealmentFramework(nullptr); }

  // From now on the menu bar shows a clock and the items of these applications, which are launched, from process
  // 2000 on, if they do not run yet. Posts no notification.
  void showItems(const std::vector<NamedApp>& apps) {
    const auto clock = element(hostPid)->with("AXIdentifier", "com.apple.menuextra.clock");
    std::vector children{clock->with("AXFrame", clockFrame)};
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
    while (scanExecutor.runOne() || mainQueue.runOne()) continue;
  }

  std::int32_t freePid = 2000;
  ManualMainQueue mainQueue;
  ManualExecutor scanExecutor;
  MemoryUserDefaults userDefaults;
  MemoryBundle bundle;
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

  const Platform platform{mainQueue,   scanExecutor,  userDefaults, bundle,     bundle,           bundle,
                          workspace,   accessibility, eventTaps,    hotKeys,    loginItem,        localizedText,
                          application, statusBar,     windows,      pasteboard, applicationIcons, words};
};

}  // namespace orvo
