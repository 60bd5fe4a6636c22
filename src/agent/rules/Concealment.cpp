#include "agent/rules/Concealment.h"

#include <algorithm>
#include <utility>

namespace orvo {

std::uint32_t Concealment::activate(std::string requester, std::int32_t process, std::set<std::string> allowedBundles) {
  std::size_t requests = 1;
  std::size_t bundles = 0;
  std::size_t letters = 0;
  const auto add = [&](const std::set<std::string>& allowed) {
    bundles += allowed.size();
    for (const std::string& bundle : allowed) letters += bundle.size();
  };
  add(allowedBundles);
  for (const auto& [assertion, request] : requests_) {
    if (request.process != process) continue;
    ++requests;
    add(request.allowedBundles);
  }
  if (requests > mostOfProcess || bundles > mostBundles || letters > mostLetters) return 0;
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
