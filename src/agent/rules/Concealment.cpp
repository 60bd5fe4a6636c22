#include "agent/rules/Concealment.h"

#include <algorithm>
#include <utility>

namespace orvo {

std::uint32_t Concealment::activate(std::string requester, std::int32_t process, std::set<std::string> allowedBundles) {
  const auto count = std::count_if(requests_.begin(), requests_.end(),
                                   [=](const auto& request) { return request.second.process == process; });
  if (static_cast<std::size_t>(count) >= mostOfProcess) return 0;
  requests_[++last_] = {std::move(requester), process, std::move(allowedBundles)};
  return last_;
}

bool Concealment::invalidate(std::uint32_t assertion, const std::string& requester) {
  const auto found = requests_.find(assertion);
  if (found == requests_.end() || found->second.requester != requester) return false;
  requests_.erase(found);
  return true;
}

void Concealment::requesterLost(const std::string& requester) {
  std::erase_if(requests_, [&](const auto& request) { return request.second.requester == requester; });
}

std::set<std::string> Concealment::requesters() const {
  std::set<std::string> names;
  for (const auto& [assertion, request] : requests_) names.insert(request.requester);
  return names;
}

bool Concealment::shows(const std::string& bundle) const {
  return bundle.empty() || bundle == protected_ ||
         std::all_of(requests_.begin(), requests_.end(),
                     [&](const auto& request) { return request.second.allowedBundles.contains(bundle); });
}

}  // namespace orvo
