#include "agent/MenuBarService.h"

#include <chrono>
#include <cstdio>
#include <memory>
#include <utility>

#include "agent/BusCall.h"
#include "platform/linux/ApplicationIdentity.h"

namespace orvo {

namespace {

// The bus itself answers at once unless the machine is choking.
constexpr std::chrono::seconds busLimit{25};

std::string bundleOf(std::int32_t processIdentifier) {
  auto identity = identifyProcess(processIdentifier);
  return identity ? std::move(identity->bundleIdentifier) : std::string();
}

// Of one sender; more than an application starts with.
constexpr int mostAtOnce = 16;

bool isError(const QDBusMessage& answer) { return answer.type() != QDBusMessage::ReplyMessage; }

std::int32_t processIn(const QDBusMessage& answer) {
  return isError(answer) ? 0 : static_cast<std::int32_t>(answer.arguments().value(0).toUInt());
}

}  // namespace

MenuBarService::MenuBarService(QDBusConnection bus) : bus_(std::move(bus)), views_(bus_) {
  connect(&views_, &PanelViews::made, this, [this](const QString& address) {
    news_.viewMade(address.toStdString());
    tellPanel();
  });
  connect(&views_, &PanelViews::delayed, this, [this](const QString& address) {
    news_.viewDelayed(address.toStdString());
    tellPanel();
  });
  names_.setConnection(bus_);
  names_.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
  connect(&names_, &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString& name, const QString& before, const QString& /*now*/) {
            if (!before.isEmpty()) nameLost(name);
          });
}

void MenuBarService::registerItem(const QString& text, const QString& sender, std::function<void()> done) {
  const auto registration = parseRegistration(text.toStdString(), sender.toStdString());
  if (!registration) return done();
  if (!sender.isEmpty() && registering_[sender] >= mostAtOnce) {
    refuse(sender.toStdString(), "registers too many items at once");
    return done();
  }
  ++registering_[sender];
  const QString name = QString::fromStdString(registration->name);
  watch(name);
  const auto finish = [=, this, done = std::move(done)](const std::string& owner, std::int32_t process) {
    const bool isThere = answered(name) && process != 0;
    if (--registering_[sender] == 0) registering_.erase(sender);
    if (isThere) add({owner, registration->path, process, {registration->name}, bundleOf(process)});
    if (!menuBar_.isNamed(registration->name) && !requesters_.contains(name)) unwatch(name);
    done();
  };
  send(bus_, aboutName(QStringLiteral("GetNameOwner"), name), busLimit, this, [=, this](const QDBusMessage& answer) {
    if (isError(answer)) return finish({}, 0);
    const QString owner = answer.arguments().value(0).toString();
    send(bus_, aboutName(QStringLiteral("GetConnectionUnixProcessID"), owner), busLimit, this,
         [=](const QDBusMessage& process) { finish(owner.toStdString(), processIn(process)); });
  });
}

void MenuBarService::activate(const QString& requester, const QStringList& allowedBundles,
                              std::function<void(std::uint32_t)> done) {
  std::set<std::string> allowed;
  for (const QString& bundle : allowedBundles) allowed.insert(bundle.toStdString());
  auto conceal = [=, this, allowed = std::move(allowed), done = std::move(done)] {
    const auto [assertion, change] = menuBar_.activate(requester.toStdString(), allowed);
    if (assertion == 0) refuse(requester.toStdString(), "has too many requests in force");
    if (assertion != 0) announce(change);
    done(assertion);
  };
  if (requesters_.contains(requester)) return conceal();
  watch(requester);
  // Whoever left before we watched is told of by nobody: ask first.
  send(bus_, aboutName(QStringLiteral("GetNameOwner"), requester), busLimit, this,
       [=, this, conceal = std::move(conceal)](const QDBusMessage& answer) {
         answered(requester);
         if (isError(answer)) return unwatch(requester);
         requesters_.insert(requester);
         conceal();
       });
}

bool MenuBarService::invalidate(std::uint32_t assertion, const QString& requester) {
  const auto change = menuBar_.invalidate(assertion, requester.toStdString());
  if (change) announce(*change);
  return change.has_value();
}

// The watch goes out before the questions, so that no loss falls between them.
void MenuBarService::watch(const QString& name) {
  names_.addWatchedService(name);
  asking_.insert(name);
}

bool MenuBarService::answered(const QString& name) {
  const auto found = asking_.find(name);
  if (found == asking_.end()) return false;
  asking_.erase(found);
  return true;
}

// A later question about the same name relies on the same watch.
void MenuBarService::unwatch(const QString& name) {
  if (!asking_.contains(name)) names_.removeWatchedService(name);
}

void MenuBarService::nameLost(const QString& name) {
  asking_.erase(name);
  unwatch(name);
  requesters_.erase(name);
  announce(menuBar_.nameLost(name.toStdString()));
}

void MenuBarService::add(const TrayItem& item) {
  const auto change = menuBar_.add(item);
  if (!change && menuBar_.find(item.address()) == nullptr)
    refuse("process " + std::to_string(item.processIdentifier), "has too many items");
  if (!change) return Q_EMIT changed();
  const std::string address = item.address();
  news_.add(address);
  views_.ask(item, QStringLiteral("Id"),
             [this, address](const QString& id) { news_.identify(address, id.toStdString()); });
  announce(*change);
  Q_EMIT itemArrived(QString::fromStdString(address), static_cast<std::uint32_t>(item.processIdentifier),
                     QString::fromStdString(item.bundle));
}

// A peer can make up as many names as it likes.
void MenuBarService::refuse(const std::string& whom, const char* what) {
  constexpr std::size_t mostTold = 100;
  if (refused_.size() < mostTold && refused_.insert(whom).second)
    std::fprintf(stderr, "orvo-agent: %s %s\n", whom.c_str(), what);
}

void MenuBarService::announce(const MenuBarChange& change) {
  for (const std::string& address : change.left) {
    views_.forget(QString::fromStdString(address));
    tell(news_.forget(address));
  }
  for (const std::string& address : change.hidden) news_.want(address, false);
  for (const std::string& address : change.shown) news_.want(address, true);
  tellPanel();
  Q_EMIT changed();
}

void MenuBarService::toldItemsRead() {
  for (const std::string& address : news_.beginAll()) follow(address);
}

void MenuBarService::renewViews() {
  news_.renewAll();
  tellPanel();
}

void MenuBarService::tellPanel() {
  tell(news_.due());
  if (news_.isSettled()) Q_EMIT settled();
}

void MenuBarService::tell(const std::vector<News>& news) {
  for (const auto& [address, isShown] : news) {
    const QString text = QString::fromStdString(address);
    if (!isShown) {
      Q_EMIT itemHidden(text);
      continue;
    }
    Q_EMIT itemShown(text);
    follow(address);
  }
}

void MenuBarService::follow(const std::string& address) {
  if (const TrayItem* item = menuBar_.find(address)) views_.follow(*item);
}

}  // namespace orvo
