#include "agent/TrayCensus.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <utility>

#include <QDBusMessage>
#include <QDBusVariant>

#include "agent/BusCall.h"
#include "agent/MenuBarService.h"
#include "agent/PanelViews.h"
#include "agent/StatusNotifierWatcher.h"

namespace orvo {

namespace {

constexpr std::chrono::milliseconds restAfterNews{500};
constexpr std::chrono::seconds limit{1};

// A panel that is starting has no tree yet.
constexpr std::chrono::seconds restAfterMiss{1};
constexpr int mostMisses = 5;

const Accessible registryRoot{"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"};

// A plug-in with a process of its own hangs below no application: the first object that it makes is its window.
constexpr const char* plugPath = "/org/a11y/atspi/accessible/1";

// What xfce4-panel 4.18 puts side by side: icons of the older kind, the items, the arrow for hidden ones.
constexpr std::size_t placeOfItems = 1;

bool isShowing(const QDBusMessage& answer) {
  return answer.type() == QDBusMessage::ReplyMessage &&
         answer.arguments().value(0).value<QDBusVariant>().variant().toString() != QStringLiteral("Passive");
}

}  // namespace

TrayCensus::TrayCensus(QDBusConnection session, MenuBarService& service)
    : session_(std::move(session)), service_(service) {
  rest_.setSingleShot(true);
  connect(&service_, &MenuBarService::settled, this, [this] {
    misses_ = 0;
    rest_.start(restAfterNews);
  });
  connect(&rest_, &QTimer::timeout, this, &TrayCensus::begin);
}

void TrayCensus::begin() {
  send(session_, aboutName(QStringLiteral("ListQueuedOwners"), watcherName), limit, this,
       [this](const QDBusMessage& answer) { askProcesses(answer.arguments().value(0).toStringList()); });
}

void TrayCensus::askProcesses(const QStringList& panels) {
  processes_.clear();
  for (const QString& panel : panels) {
    if (panel == session_.baseService()) continue;
    send(session_, aboutName(QStringLiteral("GetConnectionUnixProcessID"), panel), limit, this,
         [this](const QDBusMessage& answer) { processes_.insert(answer.arguments().value(0).toUInt()); });
  }
  // The bus answers in order.
  send(session_, {"org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", {}}, limit, this,
       [this](const QDBusMessage& answer) {
         if (answer.type() == QDBusMessage::ReplyMessage && !processes_.empty())
           count(answer.arguments().value(0).toString().toStdString());
       });
}

void TrayCensus::count(const std::string& accessibilityAddress) {
  if (std::exchange(isCounting_, true)) return rest_.start(restAfterNews);
  shown_.reset();
  bus_.begin(accessibilityAddress);
  bus_.askChildren(registryRoot, [this](const std::vector<Accessible>& applications) {
    for (const Accessible& application : applications) {
      bus_.askProcess(application.service, [this, application](std::uint32_t process) {
        if (processes_.contains(process)) descend({application.service, plugPath});
      });
    }
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
  for (const TrayItem& item : service_.menuBar().shownItems()) {
    ++tally->open;
    send(session_, propertyOfItem(item, QStringLiteral("Status")), limit, this,
         [this, tally](const QDBusMessage& answer) {
           if (isShowing(answer)) ++tally->expected;
           if (--tally->open == 0 && !rest_.isActive()) judge(tally->expected);
         });
  }
}

void TrayCensus::judge(std::size_t expected) {
  if (*shown_ >= expected) {
    isBelieved_ = isBelieved_ || (*shown_ == expected && expected > 0);
    isListTold_ = isRenewed_ = false;
  } else if (!std::exchange(isListTold_, true)) {
    Q_EMIT listDoubted();
    rest_.start(restAfterNews);
  } else if (std::exchange(isRenewed_, isBelieved_)) {
    isBelieved_ = false;
  } else if (isBelieved_) {
    std::fprintf(stderr, "orvo-agent: the panel shows %zu of %zu icons; it is told of all again\n", *shown_, expected);
    service_.renewViews();
  }
}

}  // namespace orvo
