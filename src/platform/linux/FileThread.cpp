#include "platform/linux/FileThread.h"

#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <limits>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>

namespace orvo {

namespace {

struct Running {
  std::mutex mutex;
  std::size_t count = 0;
  std::set<std::string> subjects;
};

// Never destroyed: a thread may outlive everything else.
Running& running() {
  static Running& all = *new Running;
  return all;
}

void keepOnly(int descriptor) {
  if (unshare(CLONE_FILES) != 0) return;
  const auto first = static_cast<unsigned>(STDERR_FILENO) + 1;
  const auto kept = static_cast<unsigned>(std::max(descriptor, STDERR_FILENO));
  if (kept > first) close_range(first, kept - 1, 0);
  close_range(kept + 1, std::numeric_limits<unsigned>::max(), 0);
}

bool enter(std::size_t room) {
  const std::lock_guard lock(running().mutex);
  if (running().count >= room) return false;
  ++running().count;
  return true;
}

void leave() {
  const std::lock_guard lock(running().mutex);
  --running().count;
}

}  // namespace

bool FileThread::begin(std::function<void()> work, std::function<void()> after, int kept, std::size_t room) {
  if (!enter(room)) return false;
  try {
    std::thread([work = std::move(work), after = std::move(after), kept] {
      keepOnly(kept);
      work();
      leave();
      if (after) after();
    }).detach();
    return true;
  } catch (const std::system_error&) {
    leave();
    return false;
  }
}

bool FileThread::open(const std::string& subject) {
  const std::lock_guard lock(running().mutex);
  return running().subjects.insert(subject).second;
}

void FileThread::close(const std::string& subject) {
  const std::lock_guard lock(running().mutex);
  running().subjects.erase(subject);
}

}  // namespace orvo
