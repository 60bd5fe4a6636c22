// The concealment requests in force. Owned by MenuBar; main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace orvo {

class Concealment {
 public:
  // A program needs one, and a second while it replaces the first.
  static constexpr std::size_t mostOfProcess = 16;
  // Of the identifiers in all of a process's requests; far more than can run at once.
  static constexpr std::size_t mostBundles = 10'000;
  static constexpr std::size_t mostLetters = std::size_t{128} * 1024;

  // Shows the application whatever is requested.
  void protect(std::string bundle) { protected_ = std::move(bundle); }

  // `requester` is the unique bus name on whose connection alone the request may end. 0 when its process has as
  // many requests in force as it may.
  std::uint32_t activate(std::string requester, std::int32_t process, std::set<std::string> allowedBundles);

  // False when the requester has no such request.
  bool invalidate(std::uint32_t assertion, const std::string& requester);

  void requesterLost(const std::string& requester);

  bool isEmpty() const { return requests_.empty(); }
  // Those who have a request in force.
  std::set<std::string> requesters() const;

  bool isProtected(const std::string& bundle) const { return !bundle.empty() && bundle == protected_; }

  // With several requests an item shows only if each allows its owner. An owner that cannot be told,
  // an empty one, is not one that the person chose to hide.
  bool shows(const std::string& bundle) const;

 private:
  struct Request {
    std::string requester;
    std::int32_t process;
    std::set<std::string> allowedBundles;
  };

  std::string protected_;
  std::map<std::uint32_t, Request> requests_;
  std::uint32_t last_ = 0;
};

}  // namespace orvo
