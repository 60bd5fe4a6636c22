#include "platform/linux/ApplicationLookup.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include "platform/linux/FileThread.h"

namespace orvo {

namespace {

// Processes about which questions are open; far more than have icons.
constexpr std::size_t most = 1000;

}  // namespace

// Shared, since a thread may outlive everything else.
struct ApplicationLookup::Bell {
  Bell() = default;
  Bell(const Bell&) = delete;
  Bell& operator=(const Bell&) = delete;
  ~Bell() { close(descriptor); }

  const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
};

ApplicationLookup::ApplicationLookup(sd_event* loop, std::chrono::milliseconds limit)
    : limit_(limit),
      bell_(std::make_shared<Bell>()),
      rung_(loop, bell_->descriptor, [this] { takeAnswers(); }),
      late_(loop, [this] { giveUp(); }) {}

void ApplicationLookup::find(std::int32_t process, Found found) {
  const auto open = std::ranges::find_if(
      questions_, [=](const Question& each) { return each.process == process && (isLate(each) || !isBegun(each)); });
  if (open == questions_.end() && questions_.size() < most) {
    questions_.push_back({process, Clock::now() + limit_, {std::move(found)}});
  } else if (open != questions_.end() && !isLate(*open)) {
    open->found.push_back(std::move(found));
  } else {
    // Of one that is late, onLate() tells. By then its number may be another process's.
    if (open != questions_.end()) open->isAskedAgain = true;
    return found({});
  }
  proceed();
}

bool ApplicationLookup::isExpecting() const { return !questions_.empty() && std::ranges::none_of(questions_, &isLate); }

// One thread looks at a time. One that is late is left to itself, and the next question has another.
void ApplicationLookup::proceed() {
  const auto now = Clock::now();
  const auto isOver = [now](const Question& each) { return each.deadline <= now; };
  const auto next = std::ranges::find_if_not(questions_, &isBegun);
  const auto begun = static_cast<std::size_t>(next - questions_.begin());
  if (next != questions_.end() && begun < FileThread::most && std::all_of(questions_.begin(), next, isOver)) {
    // One that has waited for so long that it is late has the next one wait no longer than others.
    if (isOver(*next)) next->deadline = now + limit_;
    begin(*next);
  }
  std::optional<Clock::time_point> due;
  for (const Question& each : questions_)
    if (!isLate(each)) due = std::min(due.value_or(each.deadline), each.deadline);
  if (!due) return late_.stop();
  late_.start(std::chrono::ceil<std::chrono::milliseconds>(*due - now));
}

// Without a thread it is begun with the next question, or when this one is late.
void ApplicationLookup::begin(Question& question) {
  const auto task = std::make_shared<std::packaged_task<Answer()>>(
      [process = question.process, entries = std::move(entries_)]() mutable {
        return look(process, std::move(entries));
      });
  auto answer = task->get_future();
  const auto ring = [bell = bell_] { eventfd_write(bell->descriptor, 1); };
  if (FileThread::begin([task] { (*task)(); }, ring, bell_->descriptor)) question.answer = std::move(answer);
}

ApplicationLookup::Answer ApplicationLookup::look(std::int32_t process, std::unique_ptr<DesktopEntries> entries) {
  if (!entries) entries = std::make_unique<DesktopEntries>(DesktopEntries::standardFolders());
  entries->refresh();
  auto identity = identifyProcess(process, "/proc", *entries);
  return {std::move(identity).value_or(ApplicationIdentity{}), std::move(entries)};
}

void ApplicationLookup::takeAnswers() {
  eventfd_t rings = 0;
  eventfd_read(bell_->descriptor, &rings);
  rung_.start();
  const auto answered = std::stable_partition(questions_.begin(), questions_.end(), [](const Question& each) {
    return !isBegun(each) || each.answer.wait_for(std::chrono::seconds(0)) != std::future_status::ready;
  });
  std::vector<Question> done(std::make_move_iterator(answered), std::make_move_iterator(questions_.end()));
  questions_.erase(answered, questions_.end());
  for (Question& question : done) take(question);
  proceed();
}

void ApplicationLookup::take(Question& question) {
  Answer answer = question.answer.get();
  entries_ = std::move(answer.entries);
  if (question.isAskedAgain) return void(questions_.push_back({question.process, question.deadline, {}}));
  if (isLate(question)) onLate(question.process, answer.identity);
  for (const Found& found : question.found) found(answer.identity);
}

void ApplicationLookup::giveUp() {
  std::vector<Found> late;
  for (Question& each : questions_)
    if (each.deadline <= Clock::now()) std::ranges::move(std::exchange(each.found, {}), std::back_inserter(late));
  for (const Found& found : late) found({});
  proceed();
}

}  // namespace orvo
