// Finds out which application a process belongs to, on threads of its own: files of others tell, and their file
// system may be slow or not answer at all. There is a thread only while a question is open. The thread of its event
// loop, on which the answers come too.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <vector>

#include "platform/linux/ApplicationIdentity.h"
#include "platform/linux/DesktopEntries.h"
#include "platform/linux/ReadWatch.h"
#include "platform/linux/Timer.h"

namespace orvo {

class ApplicationLookup {
 public:
  ApplicationLookup(sd_event* loop, std::chrono::milliseconds limit);

  // Called once, in the order of asking, those about one process together; without an identifier for unknown, and for
  // what is not known within the limit. While as many threads as may be are held up, all answers are late.
  using Found = std::function<void(const ApplicationIdentity& identity)>;
  void find(std::int32_t process, Found found);

  // What became known after the limit.
  std::function<void(std::int32_t process, const ApplicationIdentity& identity)> onLate;

  // Whether questions are open, all of them within the limit.
  bool isExpecting() const;

 private:
  using Clock = std::chrono::steady_clock;
  struct Answer {
    ApplicationIdentity identity;
    std::unique_ptr<DesktopEntries> entries;
  };
  struct Question {
    std::int32_t process;
    Clock::time_point deadline;
    std::vector<Found> found;      // none once it is late
    std::future<Answer> answer{};  // of a thread, where one has begun
    bool isAskedAgain = false;     // since it is late
  };
  struct Bell;

  static bool isLate(const Question& question) { return question.found.empty(); }
  static bool isBegun(const Question& question) { return question.answer.valid(); }
  static Answer look(std::int32_t process, std::unique_ptr<DesktopEntries> entries);
  void proceed();
  void begin(Question& question);
  void takeAnswers();
  void take(Question& question);
  void giveUp();

  const std::chrono::milliseconds limit_;
  const std::shared_ptr<Bell> bell_;  // threads ring it
  ReadWatch rung_;
  Timer late_;
  std::deque<Question> questions_;           // as asked, and so begun
  std::unique_ptr<DesktopEntries> entries_;  // at the thread while it looks
};

}  // namespace orvo
