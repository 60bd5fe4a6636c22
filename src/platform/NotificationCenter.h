// Delivers named system notifications to observers. Main thread only. Adapters post, the model
// observes. An observer that is removed while a notification is being delivered is not called any
// more; one that is added meanwhile is called from the next notification on.
#pragma once

#include <cstdint>
#include <functional>
#include <map>

namespace orvo {

enum class Notification {
  applicationLaunched,
  applicationTerminated,
  willSleep,
  didWake,
  screenParametersChanged,
  // The process that hosts the menu bar items ended, and with it every concealment.
  menuBarHostTerminated,
  // While something is concealed: system controls came, went, or stand elsewhere in their bar.
  menuBarLayoutChanged,
  // Other programs began or ended hiding icons, or managing them.
  concealersChanged,
};

class NotificationCenter {
 public:
  enum class Token : std::uint64_t { none = 0 };
  using Handler = std::function<void(Notification)>;

  Token addObserver(Notification name, Handler handler);
  void removeObserver(Token token);
  void post(Notification name);

 private:
  struct Observer {
    Notification name;
    Handler handler;
  };

  std::map<Token, Observer> observers_;
  std::uint64_t last_ = 0;
};

}  // namespace orvo
