// Keeps the menu bar in step with the session bus: resolves and watches the names of items and of those
// who conceal, and announces what changes. Calls nobody but the bus itself, and never waits for it.
// Owned by main; main thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "agent/BusCall.h"
#include "agent/PanelQueue.h"
#include "agent/PanelViews.h"
#include "agent/rules/MenuBar.h"
#include "agent/rules/PanelNews.h"
#include "platform/linux/ApplicationLookup.h"

namespace orvo {

class MenuBarService {
 public:
  MenuBarService(sd_bus* bus, ApplicationLookup& applications);

  // Set before the first item registers, and called as things happen.
  std::function<void(const std::string& address)> onItemShown;
  std::function<void(const std::string& address)> onItemHidden;
  std::function<void(const TrayItem&)> onItemArrived;
  std::function<void()> onRequestersChanged;  // before the panel is told
  std::function<void()> onSettled;            // the panel has been told everything, and has made its views
  std::function<void()> onChanged;            // after the others, and for a further name of an item alone

  const MenuBar& menuBar() const { return menuBar_; }
  PanelQueue& panels() { return panels_; }

  // What the panel was told; follows the menu bar, see PanelNews.
  std::vector<std::string> toldItems() const { return news_.told(); }
  bool isSettled() const { return news_.isSettled(); }

  // Panels make their views of whatever a list holds that they are told, or ask for when they start.
  void listTold();
  void listRead(const std::string& reader);  // by its unique name, panel or not

  // The application of a process that had none when its items were registered.
  void identify(std::int32_t process, const std::string& bundle) { announce(menuBar_.identify(process, bundle)); }

  // Has the panel make every view anew, where it shows other items than it was told.
  void renewViews();

  void protect(const std::string& bundle) { menuBar_.protect(bundle); }
  // Whether the process has an item of the protected application.
  bool isProtected(std::int32_t process) const;

  // `done` is called once the item is registered, or cannot be.
  void registerItem(const std::string& text, const std::string& sender, std::function<void()> done);

  // `done` gets the assertion once the panel has been told all that it can be told now, or 0 when the
  // requester's process has too many, or had them ended lately, or the bus does not know it.
  void activate(const std::string& requester, std::set<std::string> allowedBundles,
                std::function<void(std::uint32_t)> done);

  // The processes that have something concealed, each once.
  const std::set<std::int32_t>& requesters() const { return told_; }

  // Ends what all others have concealed; those that run another program may not do it again at once.
  void endOthers(std::int32_t process);

  // False when the requester has no such assertion.
  bool invalidate(std::uint32_t assertion, const std::string& requester);

 private:
  using Question = std::uint64_t;  // no other has its number
  Question watch(const std::string& name);
  bool answered(Question question);  // false when the name was lost meanwhile
  void unwatch(const std::string& name);
  void add(const TrayItem& item);
  void refuse(const std::string& whom, const char* what);
  void nameLost(const std::string& name);
  void announce(const MenuBarChange& change);
  void tellPanel();
  void tell(const std::vector<News>& news);
  void follow(const std::string& address);

  sd_bus* bus_;
  ApplicationLookup& applications_;
  MenuBar menuBar_;
  PanelNews news_;
  PanelQueue panels_;
  PanelViews views_;
  std::map<std::string, BusSlot> watched_;
  std::multimap<std::string, Question> asking_;  // names about which there is no answer yet
  Question last_ = 0;
  std::map<std::string, std::int32_t> requesters_;  // watched, and there when the watch began; their processes
  std::set<std::int32_t> told_;
  std::map<std::int32_t, std::chrono::steady_clock::time_point> barred_;  // processes, each until then
  std::map<std::string, std::size_t> registering_;  // by sender: registrations that the bus has yet to answer
  std::set<std::string> refused_;                   // told on standard error
};

}  // namespace orvo
