#include "platform/NotificationCenter.h"

#include <utility>
#include <vector>

namespace orvo {

NotificationCenter::Token NotificationCenter::addObserver(Notification name, Handler handler) {
  const auto token = static_cast<Token>(++last_);
  observers_.emplace(token, Observer{name, std::move(handler)});
  return token;
}

void NotificationCenter::removeObserver(Token token) { observers_.erase(token); }

void NotificationCenter::post(Notification name) {
  std::vector<Token> concerned;
  for (const auto& [token, observer] : observers_) {
    if (observer.name == name) concerned.push_back(token);
  }
  for (const Token token : concerned) {
    const auto found = observers_.find(token);
    if (found == observers_.end()) continue;
    const Handler handler = found->second.handler;
    handler(name);
  }
}

}  // namespace orvo
