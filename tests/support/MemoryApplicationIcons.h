// Keeps every request for a picture until the test answers it.
#pragma once

#include "platform/ApplicationIcons.h"

#include <utility>

namespace orvo {

class MemoryApplicationIcons : public ApplicationIcons {
 public:
  struct Request {
    std::int32_t processIdentifier;
    int size;
    Answer answer;
  };
  std::vector<Request> requests;

  void icon(std::int32_t processIdentifier, int size, Answer answer) override {
    requests.push_back({processIdentifier, size, std::move(answer)});
  }
};

}  // namespace orvo
