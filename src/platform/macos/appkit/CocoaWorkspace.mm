#include "platform/macos/appkit/CocoaWorkspace.h"

#include "platform/macos/appkit/ActionTarget.h"
#include "platform/macos/appkit/KeyValueObserver.h"
#include "platform/macos/appkit/NotificationObserver.h"
#include "platform/macos/foundation/NsText.h"

#import <AppKit/AppKit.h>

#include <utility>

namespace orvo {

namespace {

RunningApplication runningApplicationOf(NSRunningApplication* application) {
  return {.bundleIdentifier = textOf([application bundleIdentifier]),
          .processIdentifier = [application processIdentifier],
          .localizedName = textOf([application localizedName]),
          .bundlePath = textOf([[application bundleURL] path])};
}

std::vector<RunningApplication> listOf(NSArray* applications) {
  std::vector<RunningApplication> list;
  list.reserve([applications count]);
  for (NSRunningApplication* application in applications) list.push_back(runningApplicationOf(application));
  return list;
}

// What came or went, or the whole list after or before the change; nil where the change tells of neither.
NSArray* listIn(NSDictionary* change, NSString* key) {
  id const list = [change objectForKey:key];
  return [list isKindOfClass:[NSArray class]] ? list : nil;
}

// One that may have an icon: the system's own agents, services and helpers inside other programs come and go without.
bool isAccessory(NSRunningApplication* application) {
  if ([application activationPolicy] != NSApplicationActivationPolicyAccessory) return false;
  const std::string path = textOf([[application bundleURL] path]).value_or("");
  return path.ends_with(".app") && !path.starts_with("/System/") && path.find("/Frameworks/") == std::string::npos;
}

bool isMenuBarHost(NSRunningApplication* application) {
  return [[application bundleIdentifier] isEqualToString:nsText(menuBarHostBundle)];
}

}  // namespace

// The workspace's notifications leave out accessory programs, which most programs with an icon in the menu bar
// are, and the menu bar's host; the list of running applications holds them.
struct CocoaWorkspace::Observers {
  Observers(NSWorkspace* workspace, NotificationCenter& ours);

  NotificationObserver::Received posting(Notification name) {
    return [this, name](NSNotification*) { to.post(name); };
  }
  void launched(NSNotification* notification) const;
  void listChanged(NSDictionary* change);

  NotificationCenter& to;
  // Those that run and whose launch the list has told: should one turn to the Dock, the workspace tells it too.
  const Retained<NSMutableSet*> told = Retained<NSMutableSet*>::owning([[NSMutableSet alloc] init]);
  const NotificationObserver launch;
  const NotificationObserver termination;
  const NotificationObserver sleep;
  const NotificationObserver wake;
  const KeyValueObserver runningApplications;
};

CocoaWorkspace::Observers::Observers(NSWorkspace* workspace, NotificationCenter& ours)
    : to(ours),
      launch([workspace notificationCenter], NSWorkspaceDidLaunchApplicationNotification,
             [this](NSNotification* notification) { launched(notification); }),
      termination([workspace notificationCenter], NSWorkspaceDidTerminateApplicationNotification,
                  posting(Notification::applicationTerminated)),
      sleep([workspace notificationCenter], NSWorkspaceWillSleepNotification, posting(Notification::willSleep)),
      wake([workspace notificationCenter], NSWorkspaceDidWakeNotification, posting(Notification::didWake)),
      runningApplications(workspace, @"runningApplications", [this](NSDictionary* change) { listChanged(change); }) {}

void CocoaWorkspace::Observers::launched(NSNotification* notification) const {
  id const application = [[notification userInfo] objectForKey:NSWorkspaceApplicationKey];
  if (![told.get() containsObject:application]) to.post(Notification::applicationLaunched);
}

void CocoaWorkspace::Observers::listChanged(NSDictionary* change) {
  NSArray* const before = listIn(change, NSKeyValueChangeOldKey);
  NSArray* const now = listIn(change, NSKeyValueChangeNewKey);
  for (NSRunningApplication* application in now) {
    if ([before containsObject:application] || !isAccessory(application)) continue;
    [told.get() addObject:application];
    to.post(Notification::applicationLaunched);
  }
  for (NSRunningApplication* application in before) {
    if ([now containsObject:application]) continue;
    [told.get() removeObject:application];
    if (isMenuBarHost(application)) {
      to.post(Notification::menuBarHostTerminated);
    } else if (isAccessory(application)) {
      to.post(Notification::applicationTerminated);
    }
  }
}

CocoaWorkspace::CocoaWorkspace() {
  @autoreleasepool {
    observers_ = std::make_unique<Observers>([NSWorkspace sharedWorkspace], notificationCenter_);
  }
}

CocoaWorkspace::~CocoaWorkspace() = default;

std::vector<RunningApplication> CocoaWorkspace::runningApplications() const {
  @autoreleasepool {
    return listOf([[NSWorkspace sharedWorkspace] runningApplications]);
  }
}

std::optional<RunningApplication> CocoaWorkspace::runningApplication(std::int32_t processIdentifier) const {
  @autoreleasepool {
    NSRunningApplication* const found =
        [NSRunningApplication runningApplicationWithProcessIdentifier:processIdentifier];
    if (found == nil) return std::nullopt;
    return runningApplicationOf(found);
  }
}

std::vector<RunningApplication> CocoaWorkspace::runningApplications(const std::string& bundleIdentifier) const {
  @autoreleasepool {
    return listOf([NSRunningApplication runningApplicationsWithBundleIdentifier:nsText(bundleIdentifier)]);
  }
}

std::optional<std::string> CocoaWorkspace::applicationPath(const std::string& bundleIdentifier) const {
  @autoreleasepool {
    NSWorkspace* const workspace = [NSWorkspace sharedWorkspace];
    return textOf([[workspace URLForApplicationWithBundleIdentifier:nsText(bundleIdentifier)] path]);
  }
}

void CocoaWorkspace::openURL(const std::string& url, std::function<void()> failed) {
  @autoreleasepool {
    NSURL* const address = [NSURL URLWithString:nsText(url)];
    if (address != nil && [[NSWorkspace sharedWorkspace] openURL:address]) return;
    OrvoActionTarget* const later = [OrvoActionTarget targetWithAction:std::move(failed)];
    [later performSelectorOnMainThread:@selector(send:) withObject:nil waitUntilDone:NO];
  }
}

}  // namespace orvo
