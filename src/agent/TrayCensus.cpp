#include "agent/TrayCensus.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <utility>

#include "agent/BusCall.h"
#include "agent/MenuBarService.h"
#include "agent/PanelSettings.h"
#include "agent/PanelViews.h"

namespace orvo {

namespace {

constexpr std::chrono::milliseconds restAfterNews{500};
constexpr std::chrono::seconds limit{1};

// A panel that is starting has no tree yet.
constexpr std::chrono::seconds restAfterMiss{1};
constexpr int mostMisses = 5;

// A plug-in with a process of its own hangs below no application: the first object that it makes is its window.
constexpr const char* plugPath = "/org/a11y/atspi/accessible/1";

// What xfce4-panel 4.18 puts side by side: icons of the older kind, the items, the arrow for hidden ones.
constexpr std::size_t placeOfItems = 1;

bool isShowing(sd_bus_message* answer) { return !isError(answer) && readText(answer) != "Passive"; }

}  // namespace

TrayCensus::TrayCensus(sd_bus* session, MenuBarService& service, std::function<void()> listDoubted)
    : session_(session),
      service_(service),
      listDoubted_(std::move(listDoubted)),
      bus_(sd_bus_get_event(session)),
      rest_(sd_bus_get_event(session), [this] { begin(); }) {
  service_.onSettled = [this] {
    misses_ = 0;
    rest_.start(restAfterNews);
  };
}

void TrayCensus::begin() {
  service_.panels().ask([this](const PanelQueue::Panels& panels) {
    processes_.clear();
    for (const auto& [name, process] : panels) processes_.insert(process);
    if (panels.empty()) return;
    askAccessibilityAddress(session_, limit, [this](sd_bus_message* answer) {
      if (!isError(answer)) return count(readText(answer));
      if (++misses_ < mostMisses) rest_.start(restAfterMiss);
    });
  });
}

void TrayCensus::count(const std::string& accessibilityAddress) {
  if (std::exchange(isCounting_, true)) return rest_.start(restAfterNews);
  ++counts_;
  shown_.reset();
  bus_.begin(accessibilityAddress);
  bus_.askApplications([this](const Accessible& application, std::int32_t process) {
    if (processes_.contains(process)) descend({application.service, plugPath});
  });
  bus_.whenSettled([this](AccessibilityBus::Outcome outcome) {
    isCounting_ = false;
    if (outcome == AccessibilityBus::Outcome::unanswered) shown_.reset();
    if (!shown_ && ++misses_ < mostMisses) return rest_.start(restAfterMiss);
    compare();
  });
}

void TrayCensus::descend(const Accessible& accessible) {
  bus_.askChildren(accessible, [this](const std::vector<Accessible>& children) {
    if (children.size() == 1) return descend(children.front());
    if (children.size() <= placeOfItems) return;
    bus_.askChildren(children[placeOfItems], [this](const std::vector<Accessible>& items) {
      shown_ = std::min(items.size(), shown_.value_or(items.size()));
    });
  });
}

void TrayCensus::compare() {
  if (!shown_ || rest_.isActive() || !service_.isSettled()) return;
  const std::size_t told = service_.toldItems().size();
  if (*shown_ < told) return askStatuses();
  judge(told);
}

// Panels show no item that calls itself passive, or does not answer.
void TrayCensus::askStatuses() {
  struct Tally {
    std::size_t open = 0;
    std::size_t expected = 0;
  };
  const auto tally = std::make_shared<Tally>();
  for (const TrayItem& item : service_.menuBar().items()) {
    if (!service_.menuBar().shows(item.bundle)) continue;
    ++tally->open;
    askItem(session_, item, "Status", limit, [this, tally, counted = counts_](sd_bus_message* answer) {
      if (isShowing(answer)) ++tally->expected;
      if (--tally->open == 0 && !rest_.isActive() && counted == counts_) judge(tally->expected);
    });
  }
}

void TrayCensus::judge(std::size_t expected) {
  if (*shown_ >= expected) {
    isBelieved_ = isBelieved_ || (*shown_ == expected && expected > 0);
    isListTold_ = isRenewed_ = false;
  } else if (!std::exchange(isListTold_, true)) {
    listDoubted_();
    rest_.start(restAfterNews);
  } else if (std::exchange(isRenewed_, isBelieved_)) {
    isBelieved_ = false;
  } else if (isBelieved_) {
    std::fprintf(stderr, "orvo-agent: the panel shows %zu of %zu icons; it is told of all again\n", *shown_, expected);
    service_.renewViews();
  }
}

}  // namespace orvo
