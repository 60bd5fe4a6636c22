// Brings to the main thread what a FileThread has found out late. Owned by whoever asks; main thread. What comes after
// its end is dropped.
#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <sys/eventfd.h>
#include <unistd.h>

#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace orvo {

class LateAnswers {
 public:
  // Answers come from now on, once there is an event loop; until then they are kept.
  void begin() {
    notifier_ = std::make_unique<QSocketNotifier>(descriptor(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { take(); });
  }

  // That the thread has to keep.
  int descriptor() const { return box_->descriptor; }

  // What the thread calls, on which the handler is called on the main thread.
  template <typename Found>
  std::function<void(Found)> to(std::function<void(const Found&)> handler) {
    return [box = box_, handler = std::move(handler)](Found found) {
      const std::lock_guard lock(box->mutex);
      box->answers.emplace_back([handler, found = std::move(found)] { handler(found); });
      eventfd_write(box->descriptor, 1);
    };
  }

 private:
  // Threads may outlive everything else.
  struct Box {
    Box() = default;
    Box(const Box&) = delete;
    Box& operator=(const Box&) = delete;
    ~Box() { ::close(descriptor); }

    const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    std::mutex mutex;  // guards answers
    std::vector<std::function<void()>> answers{};
  };

  void take() {
    eventfd_t rings = 0;
    eventfd_read(descriptor(), &rings);
    std::vector<std::function<void()>> answers;
    {
      const std::lock_guard lock(box_->mutex);
      answers.swap(box_->answers);
    }
    for (const auto& answer : answers) answer();
  }

  const std::shared_ptr<Box> box_ = std::make_shared<Box>();
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace orvo
