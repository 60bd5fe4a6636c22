#include "platform/macos/appkit/CocoaWorkspace.h"

#include "platform/macos/appkit/KeyValueObserver.h"
#include "platform/macos/appkit/NotificationObserver.h"
#include "platform/macos/foundation/NsText.h"

#import <AppKit/AppKit.h>

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

// A change holds the applications that were taken out, or the whole list as it was before.
bool removedMenuBarHost(NSDictionary* change) {
  id const before = [change objectForKey:NSKeyValueChangeOldKey];
  if (![before isKindOfClass:[NSArray class]]) return false;
  NSString* const host = nsText(menuBarHostBundle);
  NSArray* const now = [[NSWorkspace sharedWorkspace] runningApplications];
  for (NSRunningApplication* application in before) {
    if ([[application bundleIdentifier] isEqualToString:host] && ![now containsObject:application]) return true;
  }
  return false;
}

}  // namespace

// The workspace says nothing of the launch or end of background programs, and the menu bar's host is
// one; the list of running applications does hold it.
struct CocoaWorkspace::Observers {
  Observers(NSWorkspace* workspace, NotificationCenter& to)
      : launch([workspace notificationCenter], NSWorkspaceDidLaunchApplicationNotification, to,
               Notification::applicationLaunched),
        termination([workspace notificationCenter], NSWorkspaceDidTerminateApplicationNotification, to,
                    Notification::applicationTerminated),
        sleep([workspace notificationCenter], NSWorkspaceWillSleepNotification, to, Notification::willSleep),
        wake([workspace notificationCenter], NSWorkspaceDidWakeNotification, to, Notification::didWake),
        runningApplications(workspace, @"runningApplications", [&to](NSDictionary* change) {
          if (removedMenuBarHost(change)) to.post(Notification::menuBarHostTerminated);
        }) {}

  NotificationObserver launch;
  NotificationObserver termination;
  NotificationObserver sleep;
  NotificationObserver wake;
  KeyValueObserver runningApplications;
};

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

// What could not be opened goes unsaid on macOS.
void CocoaWorkspace::openURL(const std::string& url, std::function<void()>) {
  @autoreleasepool {
    if (NSURL* const address = [NSURL URLWithString:nsText(url)]) [[NSWorkspace sharedWorkspace] openURL:address];
  }
}

}  // namespace orvo
