// Threads that look at files of other programs, whose file system may be slow or not answer at all. Any thread.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

namespace orvo {

class FileThread {
 public:
  // How long whoever asks may wait: many times what a disk takes for what it was asked before.
  static constexpr std::chrono::milliseconds limit{100};
  // At once.
  static constexpr std::size_t most = 8;

  // False when there are too many already, or the system has none to give. `after` is called once there is room for
  // another again. The thread has none of this process's descriptors but the standard ones and `kept`: while the
  // kernel holds it up, even the end of the process would leave the others open.
  static bool begin(std::function<void()> work, std::function<void()> after = nullptr, int kept = -1,
                    std::size_t room = most);

  // What `work` finds out. Absent when that takes longer than the limit, while work on the same subject goes on, and
  // where there is no room.
  template <typename Work, typename Found = std::invoke_result_t<Work>>
  static std::optional<Found> find(const std::string& subject, Work work, std::size_t room = most) {
    if (!open(subject)) return std::nullopt;
    const auto answer = std::make_shared<std::promise<Found>>();
    auto found = answer->get_future();
    const auto tell = [subject, answer, work = std::move(work)] {
      Found result = work();
      close(subject);
      answer->set_value(std::move(result));
    };
    const bool begun = begin(tell, nullptr, -1, room);
    if (!begun) close(subject);
    if (!begun || found.wait_for(limit) != std::future_status::ready) return std::nullopt;
    return found.get();
  }

 private:
  static bool open(const std::string& subject);
  static void close(const std::string& subject);
};

}  // namespace orvo
