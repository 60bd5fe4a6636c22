#include "agent/Guardian.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace orvo {

namespace {

constexpr const char* processName = "orvo-guardian";  // the kernel keeps 15 characters

void closeOthers(int first, int second) {
  const auto [low, high] = std::minmax(first, second);
  const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (null >= 0 && standard != low && standard != high) dup2(null, standard);
  const auto close = [](int from, int to) {
    from = std::max(from, STDERR_FILENO + 1);
    if (from <= to) close_range(static_cast<unsigned>(from), static_cast<unsigned>(to), 0);
  };
  close(0, low - 1);
  close(low + 1, high - 1);
  close(high + 1, std::numeric_limits<int>::max());
}

// Nobody ever writes: the answer comes when the last writer is gone.
void waitForEnd(int lifeline) {
  char byte = 0;
  while (read(lifeline, &byte, 1) < 0 && errno == EINTR) continue;
}

std::string contents(int memory) {
  std::string text;
  std::array<char, 4096> part{};
  for (ssize_t size = 0; (size = pread(memory, part.data(), part.size(), static_cast<off_t>(text.size()))) > 0;)
    text.append(part.data(), static_cast<std::size_t>(size));
  return text;
}

}  // namespace

Guardian::Guardian(const Duty& duty) {
  std::array<int, 2> ends{-1, -1};
  memory_ = memfd_create(processName, MFD_CLOEXEC);
  const bool isReady = memory_ >= 0 && pipe2(ends.data(), O_CLOEXEC) == 0;
  lifeline_ = ends[1];
  const pid_t agent = getpid();
  const pid_t child = isReady ? fork() : -1;
  if (child == 0) serve(agent, ends[0], duty);
  if (child < 0) std::perror("orvo-agent: no guardian");
  close(ends[0]);
}

Guardian::~Guardian() {
  close(lifeline_);
  close(memory_);
}

void Guardian::serve(pid_t agent, int lifeline, const Duty& duty) const {
  for (const int ending : {SIGTERM, SIGINT, SIGHUP, SIGQUIT}) std::signal(ending, SIG_IGN);
  prctl(PR_SET_NAME, processName);
  closeOthers(lifeline, memory_);
  waitForEnd(lifeline);
  if (const std::string kept = contents(memory_); !kept.empty()) duty(agent, kept);
  std::_Exit(EXIT_SUCCESS);
}

// Cut after writing, not before: at no moment does the memory hold less than a whole text.
void Guardian::keep(const std::string& text) const {
  if (pwrite(memory_, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size())) [[maybe_unused]]
    const int cut = ftruncate(memory_, static_cast<off_t>(text.size()));
}

}  // namespace orvo
