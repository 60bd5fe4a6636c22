// Finds out which application a process belongs to, on threads of its own: files of others tell, and their file
// system may be slow or not answer at all. There is a thread only while a question is open. Owned by main; main
// thread, on which the answers come too.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "agent/ReadWatch.h"
#include "agent/Timer.h"
#include "platform/linux/DesktopEntries.h"

namespace orvo {

class ApplicationLookup {
 public:
  // Icons wait for the answer; a slow disk has given it by then.
  static constexpr std::chrono::seconds limit{1};

  explicit ApplicationLookup(sd_event* loop);

  // Called once, in the order of asking, those about one process together; with an empty text for unknown, and for what
  // is not known within the limit. While as many threads as may be are held up, all answers are late.
  using Found = std::function<void(const std::string& bundle)>;
  void find(std::int32_t process, Found found);

  // What became known after the limit; empty for unknown.
  std::function<void(std::int32_t process, const std::string& bundle)> onLate;

 private:
  using Clock = std::chrono::steady_clock;
  struct Answer {
    std::string bundle;
    std::unique_ptr<DesktopEntries> entries;
  };
  struct Question {
    std::int32_t process;
    Clock::time_point deadline;
    std::vector<Found> found;      // none once it is late
    std::future<Answer> answer{};  // of a thread, where one has begun
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

  const std::shared_ptr<Bell> bell_;  // threads ring it
  ReadWatch rung_;
  Timer late_;
  std::deque<Question> questions_;           // as asked, and so begun
  std::unique_ptr<DesktopEntries> entries_;  // at the thread while it looks
};

}  // namespace orvo
