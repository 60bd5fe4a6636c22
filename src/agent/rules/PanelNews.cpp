#include "agent/rules/PanelNews.h"

#include <algorithm>
#include <utility>

namespace orvo {

void PanelNews::add(const std::string& address) { items_.push_back({address}); }

void PanelNews::identify(const std::string& address, const std::string& id) {
  if (Item* item = find(address)) item->id = id.size() <= longestId ? id : "";
}

void PanelNews::want(const std::string& address, bool isShown) {
  if (Item* item = find(address)) item->isWanted = isShown;
}

std::vector<News> PanelNews::forget(const std::string& address) {
  const Item* item = find(address);
  if (item == nullptr) return {};
  const bool isTold = item->view != View::none;
  items_.erase(items_.begin() + (item - items_.data()));
  return isTold ? std::vector<News>{{address, false}} : std::vector<News>{};
}

// Whoever comes late to its place, not having been waited for or its Id not having been known, has those behind it
// follow.
void PanelNews::viewMade(const std::string& address) {
  Item* item = find(address);
  if (item == nullptr || item->view != View::beingMade) return;
  item->view = View::made;
  const bool wasDelayed = std::exchange(item->isDelayed, false);
  if (item->id.empty()) return;
  std::for_each(item + 1, items_.data() + items_.size(), [id = item->id, wasDelayed](Item& later) {
    const bool isEarly = wasDelayed ? later.view != View::none : later.view == View::made;
    later.isOutdated = later.isOutdated || (isEarly && later.id == id);
  });
}

void PanelNews::viewDelayed(const std::string& address) {
  if (Item* item = find(address)) item->isDelayed = item->view == View::beingMade;
}

void PanelNews::renewAll() {
  for (Item& item : items_) item.isOutdated = item.view == View::made;
}

std::vector<std::string> PanelNews::beginAll() {
  std::vector<std::string> begun;
  for (Item& item : items_) {
    if (item.view != View::made) continue;
    item.view = View::beingMade;
    begun.push_back(item.address);
  }
  return begun;
}

std::vector<News> PanelNews::due() {
  std::vector<News> news;
  for (Item& item : items_) {
    if (item.isWanted || item.view != View::made) continue;
    item.view = View::none;
    item.isOutdated = false;
    news.push_back({item.address, false});
  }
  Ids open;
  Ids appeared;
  for (Item& item : items_) tellIfDue(item, open, appeared, news);
  return news;
}

// `open` holds the Ids of earlier items that have yet to find their place, `appeared` of those that take a
// place before the later ones now. One that is no longer wanted may be again before its view is made.
void PanelNews::tellIfDue(Item& item, Ids& open, Ids& appeared, std::vector<News>& news) {
  const bool isNew = item.view == View::none;
  item.isOutdated = item.isOutdated || (!isNew && appeared.contains(item.id));
  const bool isDue = item.isWanted && item.view != View::beingMade && isOpen(item) && !open.contains(item.id);
  if (isDue) {
    if (!isNew) news.push_back({item.address, false});
    news.push_back({item.address, true});
    item.view = View::beingMade;
    item.isDelayed = item.isOutdated = false;
    if (!item.id.empty()) appeared.insert(item.id);
  }
  const bool isAwaited = (item.isWanted && isOpen(item)) || item.view == View::beingMade;
  if (isAwaited && !item.isDelayed && !item.id.empty()) open.insert(item.id);
}

bool PanelNews::isOpen(const Item& item) { return item.view != View::made || item.isOutdated; }

bool PanelNews::isSettled() const {
  return std::none_of(items_.begin(), items_.end(), [](const Item& item) {
    return item.view == View::beingMade || (item.isWanted ? isOpen(item) : item.view != View::none);
  });
}

std::vector<std::string> PanelNews::told() const {
  std::vector<std::string> addresses;
  for (const Item& item : items_)
    if (item.view != View::none) addresses.push_back(item.address);
  return addresses;
}

PanelNews::Item* PanelNews::find(const std::string& address) {
  const auto found =
      std::find_if(items_.begin(), items_.end(), [&](const Item& item) { return item.address == address; });
  return found == items_.end() ? nullptr : &*found;
}

}  // namespace orvo
