// Decides when the panel is told what. A panel makes its view of an item by asking the item's program, which
// takes a while; it must not hear that the item has gone in the meantime, or it may lose other icons or fall.
// It puts items with the same Id in the order in which it finished their views, the latest first, so equals
// are told one after another, those that were told before included. Owned by MenuBarService; main thread.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

namespace orvo {

struct News {
  std::string address;
  bool isShown;  // or has gone

  bool operator==(const News&) const = default;
};

class PanelNews {
 public:
  // In the order of registration; not to be shown until it is wanted.
  void add(const std::string& address);

  // In bytes; programs name themselves in a few.
  static constexpr std::size_t longestId = 1024;

  // The item's Id as its program tells it. Without one, or with a longer one, it equals no other.
  void identify(const std::string& address, const std::string& id);

  // What the panel should show; due() says when to tell it.
  void want(const std::string& address, bool isShown);

  // The item's program has gone, which panels notice themselves: told at once, if it was told of at all.
  std::vector<News> forget(const std::string& address);

  // The panel has finished its view of an item that it was told of.
  void viewMade(const std::string& address);

  // It takes long, the program being busy or stopped: nobody waits for it any more.
  void viewDelayed(const std::string& address);

  // Every view is to be made anew, one that is being made excepted.
  void renewAll();

  // A panel that has just started makes its views of all that it finds told; returns their addresses.
  std::vector<std::string> beginAll();

  // To be told now, in this order; counts as told.
  std::vector<News> due();

  // Whether nothing is left to be told and no view being made.
  bool isSettled() const;

  // Addresses that the panel was told of and not told away again, in the order of registration.
  std::vector<std::string> told() const;

 private:
  enum class View { none, beingMade, made };
  struct Item {
    std::string address;
    std::string id{};
    bool isWanted = false;
    View view = View::none;
    bool isDelayed = false;
    bool isOutdated = false;  // has to be told anew
  };
  using Ids = std::set<std::string>;

  Item* find(const std::string& address);
  static bool isOpen(const Item& item);
  static void tellIfDue(Item& item, Ids& open, Ids& appeared, std::vector<News>& news);

  std::vector<Item> items_;
};

}  // namespace orvo
