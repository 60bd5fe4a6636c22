// Threads that look at files of other programs, whose file system may be slow or not answer at all. Any thread.
#pragma once

#include <atomic>
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

  // What `work` finds out. Absent when that takes longer than the limit; with `late`, which is called with it then, on
  // that thread, nobody waits at all while other work is late. Absent for good while work on the same subject
  // goes on, and where there is no room.
  template <typename Work, typename Found = std::invoke_result_t<Work>>
  static std::optional<Found> find(const std::string& subject, Work work,
                                   std::type_identity_t<std::function<void(Found)>> late = nullptr, int kept = -1,
                                   std::size_t room = most) {
    struct Answer {
      std::promise<Found> promise;
      std::atomic<bool> isHalfDone = false;  // found, or not waited for any more: the second is the late one
    };
    if (!open(subject)) return std::nullopt;
    const auto answer = std::make_shared<Answer>();
    auto found = answer->promise.get_future();
    const bool waits = !late || !isAnyLate();
    const bool begun = begin(
        [answer, subject, work = std::move(work), late = std::move(late)]() mutable {
          Found result = work();
          close(subject);
          if (answer->isHalfDone.exchange(true)) {
            endLate();
            if (late) late(std::move(result));
          } else {
            answer->promise.set_value(std::move(result));
          }
        },
        nullptr, kept, room);
    if (!begun) close(subject);
    if (!begun) return std::nullopt;
    if (waits && found.wait_for(limit) == std::future_status::ready) return found.get();
    beginLate();
    if (!answer->isHalfDone.exchange(true)) return std::nullopt;
    endLate();
    return found.get();
  }

 private:
  static bool open(const std::string& subject);
  static void close(const std::string& subject);
  static bool isAnyLate();
  static void beginLate();
  static void endLate();
};

}  // namespace orvo
