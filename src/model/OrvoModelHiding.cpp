// Hiding, revealing and automatic re-hiding.
#include "model/OrvoModel.h"

#include "core/VisibilityPlan.h"
#include "platform/Words.h"
#include "platform/Workspace.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace orvo {

namespace {

constexpr MainQueue::Duration confirmationTimeout{5000};

MainQueue::Duration fromSeconds(std::int64_t seconds) {
  constexpr auto longest = std::chrono::duration_cast<std::chrono::seconds>(MainQueue::Duration::max());
  return seconds > longest.count() ? MainQueue::Duration::max() : std::chrono::seconds(seconds);
}

}  // namespace

bool OrvoModel::canBeManaged() const { return backendAvailable && !itemsManagedElsewhere(); }

bool OrvoModel::canHide() const {
  return nativeMenuBarReady && canBeManaged() && accessibilityGranted() && systemClickProtection() &&
         !systemRelay_->systemFrames().empty() && selectedCount() != 0 && state() != BarState::applying;
}

bool OrvoModel::isConcealing() const { return state() != BarState::visible || !concealers().empty(); }

void OrvoModel::hideSelected() {
  if (!readyToHide()) return;
  platform_.mainQueue.cancel(rehideTask_);
  platform_.mainQueue.cancel(watchdog_);
  const VisibilityPlan plan(runningBundles(), preferences().rules, ownBundle);
  if (plan.needsAssertion()) {
    requestHiding(plan.allowedBundles());
  } else {
    reveal(false);
  }
}

void OrvoModel::hideAnew() {
  if (state() != BarState::hidden) return;
  hidesOnceGuarded_ = unguardedSince_.has_value();
  if (!hidesOnceGuarded_) hideSelected();
}

bool OrvoModel::readyToHide() {
  if (!nativeMenuBarReady) {
    message = platform_.words.installMessage;
    return false;
  }
  if (!canBeManaged() || !accessibilityGranted()) return false;
  if (!systemRelay_->isInstalled() || systemRelay_->systemFrames().empty()) {
    message = platform_.words.noControls;
    return false;
  }
  return true;
}

void OrvoModel::requestHiding(const std::set<std::string>& allowedBundles) {
  const Identity request = freshIdentity();
  generation_ = request;
  state = BarState::applying;
  message = std::nullopt;
  if (onStateChanged) onStateChanged();
  auto* const assertion = createAssertion(allowedBundles, request);
  if (assertion == nullptr) {
    failed("The menu bar API could not start. All icons are visible.");
    return;
  }
  assertions_.push_back({request, assertion});
  systemRelay_->setConcealed(true);
  watchdog_ =
      platform_.mainQueue.runAfter(confirmationTimeout, weakly([request](OrvoModel& self) { self.timedOut(request); }));
}

// What the system's answer carries home, from whatever thread it is given on.
struct OrvoModel::AnswerContext {
  MainQueue& mainQueue;
  std::weak_ptr<OrvoModel> model;
  Identity request;

  static void invoke(void* context, const QLError* error) {
    const auto& answer = *static_cast<const AnswerContext*>(context);
    std::optional<std::string> failure;
    if (error != nullptr) failure = error->localizedDescription;
    answer.mainQueue.post([model = answer.model, request = answer.request, failure = std::move(failure)] {
      if (const auto self = model.lock()) self->answered(request, failure);
    });
  }
  static void release(void* context) { delete static_cast<AnswerContext*>(context); }
};

QLAssertionRef OrvoModel::createAssertion(const std::set<std::string>& allowedBundles, Identity request) {
  std::vector<const char*> identifiers;
  identifiers.reserve(allowedBundles.size());
  for (const std::string& bundle : allowedBundles) identifiers.push_back(bundle.c_str());
  auto context = std::make_unique<AnswerContext>(AnswerContext{platform_.mainQueue, weak_from_this(), request});
  return QLCreateMenuBarAssertion(
      identifiers.data(), identifiers.size(),
      {.invoke = AnswerContext::invoke, .release = AnswerContext::release, .context = context.release()});
}

void OrvoModel::answered(Identity request, const std::optional<std::string>& failure) {
  if (generation_ != request) return;
  platform_.mainQueue.cancel(watchdog_);
  if (failure) {
    failed("Could not hide icons: " + *failure);
  } else {
    confirmed(request);
  }
}

void OrvoModel::confirmed(Identity request) {
  releaseAssertions(request);
  state = BarState::hidden;
  systemRelay_->setConcealed(true);
  if (onStateChanged) onStateChanged();
}

void OrvoModel::timedOut(Identity request) {
  if (generation_ != request || state() != BarState::applying) return;
  failed(platform_.words.hidingUnconfirmed);
}

void OrvoModel::failed(const std::string& why) {
  reveal(false);
  message = why;
}

void OrvoModel::reveal(bool scheduleRehide) {
  generation_ = freshIdentity();
  platform_.mainQueue.cancel(watchdog_);
  platform_.mainQueue.cancel(rehideTask_);
  releaseAssertions(std::nullopt);
  // Of the person alone, whose reveal it is that may be followed by hiding again.
  if (scheduleRehide && !concealers().empty()) platform_.workspace.endConcealments();
  state = BarState::visible;
  systemRelay_->setConcealed(false);
  if (onStateChanged) onStateChanged();
  if (scheduleRehide && !stopped_ && preferences().autoRehideSeconds >= 1 && selectedCount() != 0) {
    rehideTask_ =
        platform_.mainQueue.runAfter(fromSeconds(preferences().autoRehideSeconds), weakly(&OrvoModel::hideSelected));
  }
}

void OrvoModel::releaseAssertions(std::optional<Identity> except) {
  const auto goes = [&](const Assertion& assertion) { return assertion.request != except; };
  for (const Assertion& assertion : assertions_) {
    if (goes(assertion)) QLReleaseMenuBarAssertion(assertion.handle);
  }
  std::erase_if(assertions_, goes);
}

}  // namespace orvo
