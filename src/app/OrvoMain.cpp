#include "app/OrvoMain.h"

#include "app/AppDelegate.h"
#include "bridge/MenuBarBackend.h"
#include "platform/Accessibility.h"
#include "platform/Application.h"
#include "platform/Bundle.h"
#include "platform/ProcessInfo.h"
#include "platform/Words.h"
#include "platform/Workspace.h"

#include <algorithm>
#include <ostream>
#include <string>

namespace orvo {

namespace {

constexpr const char* diagnoseArgument = "--diagnose";

bool wantsDiagnosis(const ProcessInfo& processInfo) {
  const auto arguments = processInfo.arguments();
  return std::find(arguments.begin(), arguments.end(), diagnoseArgument) != arguments.end();
}

void diagnose(const OrvoMain::EarlyServices& early, std::ostream& out) {
  const auto identifier = early.bundle.identifier();
  out << "Orvo " << early.bundle.infoText("CFBundleShortVersionString").value_or(ORVO_VERSION) << '\n'
      << "OS: " << early.processInfo.operatingSystemVersionString() << '\n'
      << "Backend: " << QLMenuBarBackendDescription() << '\n'
      << "Accessibility: " << (early.accessibility.isProcessTrusted() ? "enabled" : early.words.notTrusted) << '\n'
      << "Bundle: " << identifier.value_or("unbundled command line process") << '\n'
      << "Application path: " << early.bundle.path() << '\n';
  if (identifier) {
    out << early.words.applicationRegistry << ": "
        << early.workspace.applicationPath(*identifier).value_or("not registered") << '\n';
  }
}

std::optional<RunningApplication> otherCopy(const OrvoMain::EarlyServices& early) {
  const auto identifier = early.bundle.identifier();
  if (!identifier) return std::nullopt;
  for (RunningApplication& application : early.workspace.runningApplications(*identifier)) {
    if (application.processIdentifier != early.processInfo.processIdentifier()) return application;
  }
  return std::nullopt;
}

void run(const Platform& platform) {
  const auto delegate = AppDelegate::make(platform);
  platform.application.setDelegate(delegate.get());
  platform.application.run();
  platform.application.setDelegate(nullptr);
}

}  // namespace

void OrvoMain::main(const EarlyServices& early, std::ostream& out,
                    const std::function<const Platform*()>& makePlatform) {
  if (wantsDiagnosis(early.processInfo)) {
    diagnose(early, out);
  } else if (const auto copy = otherCopy(early)) {
    if (copy->bundlePath) early.workspace.openURL(fileURL(*copy->bundlePath, true), {});
  } else if (const Platform* const platform = makePlatform()) {
    run(*platform);
  }
}

}  // namespace orvo
