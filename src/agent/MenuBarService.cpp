#include "agent/MenuBarService.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <utility>

#include "platform/linux/Program.h"

namespace orvo {

namespace {

// Of one sender; more than an application starts with.
constexpr std::size_t mostAtOnce = 16;

// A program that asks again whenever the person has brought the icons back would have its way otherwise.
constexpr std::chrono::minutes bar{1};

using Clock = std::chrono::steady_clock;

}  // namespace

MenuBarService::MenuBarService(sd_bus* bus, ApplicationLookup& applications)
    : bus_(bus),
      applications_(applications),
      panels_(bus),
      views_(
          bus, panels_,
          [this](const std::string& address) {
            news_.viewMade(address);
            tellPanel();
          },
          [this](const std::string& address) {
            news_.viewDelayed(address);
            tellPanel();
          }) {}

void MenuBarService::registerItem(const std::string& text, const std::string& sender, std::function<void()> done) {
  const auto registration = parseRegistration(text, sender);
  if (!registration) return done();
  if (!sender.empty() && registering_[sender] >= mostAtOnce) {
    refuse(sender, "registers too many items at once");
    return done();
  }
  ++registering_[sender];
  const std::string name = registration->name;
  const Question question = watch(name);
  const auto finish = [=, this, done = std::move(done)](const std::string& owner, std::int32_t process,
                                                        const std::string& bundle) {
    const bool isThere = answered(question) && process != 0;
    if (--registering_[sender] == 0) registering_.erase(sender);
    if (isThere) add({owner, registration->path, process, {name}, bundle});
    if (!menuBar_.isNamed(name) && !requesters_.contains(name)) unwatch(name);
    done();
  };
  askAboutName(bus_, "GetNameOwner", name, unlimited, [=, this](sd_bus_message* answer) {
    const std::string owner = readText(answer);
    // For others there is no more to say than that they have an item.
    const bool isOwn = sender.empty() || sender == owner || registration->path == defaultItemPath;
    if (owner.empty() || !isOwn) return finish({}, 0, {});
    askAboutName(bus_, "GetConnectionUnixProcessID", owner, unlimited, [=, this](sd_bus_message* found) {
      const std::int32_t process = readNumber(found);
      applications_.find(process, [=](const ApplicationIdentity& application) {
        finish(owner, process, application.bundleIdentifier);
      });
    });
  });
}

void MenuBarService::activate(const std::string& requester, std::set<std::string> allowedBundles,
                              std::function<void(std::uint32_t)> done) {
  std::erase_if(barred_, [now = Clock::now()](const auto& each) { return each.second <= now; });
  auto conceal = [=, this, allowed = std::move(allowedBundles)] {
    if (barred_.contains(requesters_.at(requester))) return done(0);
    const auto [assertion, change] = menuBar_.activate(requester, requesters_.at(requester), allowed);
    if (assertion == 0)
      refuse("process " + std::to_string(requesters_.at(requester)), "has too many requests in force");
    if (assertion != 0) announce(change);
    done(assertion);
  };
  if (requesters_.contains(requester)) return conceal();
  if (asking_.count(requester) >= mostAtOnce) {
    refuse(requester, "asks for too much at once");
    return done(0);
  }
  const Question question = watch(requester);
  // Whoever left before we watched is told of by nobody: ask first.
  askAboutName(bus_, "GetConnectionUnixProcessID", requester, unlimited,
               [=, this, conceal = std::move(conceal), done = std::move(done)](sd_bus_message* answer) {
                 answered(question);
                 if (isError(answer)) return unwatch(requester), done(0);
                 requesters_[requester] = readNumber(answer);
                 conceal();
               });
}

bool MenuBarService::isProtected(std::int32_t process) const {
  return std::ranges::any_of(menuBar_.items(), [&](const TrayItem& item) {
    return item.processIdentifier == process && menuBar_.isProtected(item.bundle);
  });
}

void MenuBarService::endOthers(std::int32_t process) {
  const std::string program = executableOf(process);
  for (const std::string& requester : menuBar_.requesters()) {
    const std::int32_t other = requesters_.at(requester);
    if (other == process) continue;
    if (executableOf(other) != program) barred_[other] = Clock::now() + bar;
    announce(menuBar_.endRequests(requester));
  }
}

bool MenuBarService::invalidate(std::uint32_t assertion, const std::string& requester) {
  const auto change = menuBar_.invalidate(assertion, requester);
  if (change) announce(*change);
  return change.has_value();
}

// The watch goes out before the questions, so that no loss falls between them.
MenuBarService::Question MenuBarService::watch(const std::string& name) {
  asking_.emplace(name, ++last_);
  if (!watched_.contains(name))
    watched_[name] = watchName(bus_, name, [this, name](const std::string& before, const std::string& /*now*/) {
      if (!before.empty()) nameLost(name);
    });
  return last_;
}

bool MenuBarService::answered(Question question) {
  return std::erase_if(asking_, [=](const auto& asked) { return asked.second == question; }) > 0;
}

// A later question about the same name relies on the same watch.
void MenuBarService::unwatch(const std::string& name) {
  if (!asking_.contains(name)) watched_.erase(name);
}

void MenuBarService::nameLost(const std::string& name) {
  asking_.erase(name);
  unwatch(name);
  const MenuBarChange change = menuBar_.nameLost(name);
  requesters_.erase(name);
  announce(change);
}

void MenuBarService::add(const TrayItem& item) {
  const auto change = menuBar_.add(item);
  if (!change && menuBar_.find(item.address()) == nullptr)
    refuse("process " + std::to_string(item.processIdentifier), "has too many items");
  if (!change) return onChanged();
  const std::string address = item.address();
  news_.add(address);
  askItem(bus_, item, "Id", unlimited,
          [this, address](sd_bus_message* answer) { news_.identify(address, readText(answer)); });
  announce(*change);
  onItemArrived(item);
}

// A peer can make up as many names as it likes.
void MenuBarService::refuse(const std::string& whom, const char* what) {
  constexpr std::size_t mostTold = 100;
  if (refused_.size() < mostTold && refused_.insert(whom).second)
    std::fprintf(stderr, "orvo-agent: %s %s\n", whom.c_str(), what);
}

void MenuBarService::announce(const MenuBarChange& change) {
  std::set<std::int32_t> requesters;
  for (const std::string& requester : menuBar_.requesters()) requesters.insert(requesters_.at(requester));
  if (std::exchange(told_, requesters) != requesters) onRequestersChanged();
  for (const std::string& address : change.left) {
    views_.forget(address);
    tell(news_.forget(address));
  }
  for (const std::string& address : change.hidden) news_.want(address, false);
  for (const std::string& address : change.shown) news_.want(address, true);
  tellPanel();
  onChanged();
}

void MenuBarService::listTold() {
  for (const std::string& address : news_.beginAll()) follow(address);
}

// Nothing is told away until it is known whether a panel has read. Others could keep all panels busy.
void MenuBarService::listRead(const std::string& reader) {
  panels_.ask([this, reader, begun = news_.beginAll()](const PanelQueue::Panels& panels) {
    for (const std::string& address : begun) news_.viewMade(address);
    if (panels.contains(reader)) return listTold();
    tell(news_.due());
  });
}

void MenuBarService::renewViews() {
  news_.renewAll();
  tellPanel();
}

void MenuBarService::tellPanel() {
  tell(news_.due());
  if (news_.isSettled()) onSettled();
}

void MenuBarService::tell(const std::vector<News>& news) {
  for (const auto& [address, isShown] : news) {
    if (!isShown) {
      onItemHidden(address);
      continue;
    }
    onItemShown(address);
    follow(address);
  }
}

void MenuBarService::follow(const std::string& address) {
  if (const TrayItem* item = menuBar_.find(address)) views_.follow(*item);
}

}  // namespace orvo
