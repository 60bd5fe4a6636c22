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
  // A slow disk has answered by then.
  static constexpr std::chrono::seconds limit{1};
  // That file systems hold up.
  static constexpr std::size_t most = 8;

  // False when there are too many already, or the system has none to give. The thread has none of this process's
  // descriptors but the standard ones and `kept`: while the kernel holds it up, even the end of the process would
  // leave the others open.
  static bool begin(std::function<void()> work, int kept = -1);

  // What `work` finds out. Absent when that takes longer than the limit, and at once while earlier work on the same
  // subject is held up; then it is left to itself.
  template <typename Work>
  static std::optional<std::invoke_result_t<Work>> find(const std::string& subject, Work work,
                                                        std::chrono::milliseconds within = limit) {
    if (!open(subject)) return std::nullopt;
    const auto task =
        std::make_shared<std::packaged_task<std::invoke_result_t<Work>()>>([subject, work = std::move(work)]() mutable {
          auto result = work();
          close(subject);
          return result;
        });
    auto found = task->get_future();
    const bool begun = begin([task] { (*task)(); });
    if (!begun) close(subject);
    if (!begun || found.wait_for(within) != std::future_status::ready) return std::nullopt;
    return found.get();
  }

 private:
  static bool open(const std::string& subject);
  static void close(const std::string& subject);
};

}  // namespace orvo
