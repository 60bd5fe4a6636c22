#include "agent/Guardian.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <limits>

namespace orvo {

namespace {

constexpr const char* processName = "orvo-guardian";  // the kernel keeps 15 characters
constexpr const char* argument = "--guard";           // followed by the agent's process identifier

// What the guardian has in place of its standard input and output.
constexpr int memoryPlace = STDIN_FILENO;
constexpr int lifelinePlace = STDOUT_FILENO;

// Out of the way of the standard ones, which a process may be started without.
int raised(int descriptor) {
  const int copy = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  close(descriptor);
  return copy;
}

// It is blind to the signals that end a session or a service, which come to it as well.
pid_t spawnGuardian(int memory, int lifeline) {
  sigset_t endings;
  sigemptyset(&endings);
  for (const int ending : {SIGTERM, SIGINT, SIGHUP, SIGQUIT}) sigaddset(&endings, ending);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  posix_spawnattr_setsigmask(&attributes, &endings);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, memory, memoryPlace);
  posix_spawn_file_actions_adddup2(&actions, lifeline, lifelinePlace);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  std::string name(processName);
  std::string option(argument);
  std::string agent = std::to_string(getpid());
  const std::array<char*, 4> arguments{name.data(), option.data(), agent.data(), nullptr};
  pid_t process = -1;
  const int error = posix_spawn(&process, "/proc/self/exe", &actions, &attributes, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  return error == 0 ? process : -1;
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

Guardian::Guardian(sd_event* loop)
    : loop_(loop), memory_(raised(memfd_create(processName, MFD_CLOEXEC))), successor_(loop, [this] { replace(); }) {
  start();
}

Guardian::~Guardian() {
  ended_.reset();
  for (const int descriptor : {ending_, lifeline_, memory_}) close(descriptor);
}

void Guardian::start() {
  process_ = lifeline_ = -1;
  std::array<int, 2> ends{-1, -1};
  if (pipe2(ends.data(), O_CLOEXEC) == 0) {
    const int lifeline = raised(ends[0]);
    lifeline_ = ends[1];
    process_ = spawnGuardian(memory_, lifeline);
    close(lifeline);
  }
  started_ = std::chrono::steady_clock::now();
  ending_ = process_ < 0 ? -1 : static_cast<int>(syscall(SYS_pidfd_open, process_, 0));
  if (ending_ >= 0) return void(ended_.emplace(loop_, ending_, [this] { bury(); }));
  std::fprintf(stderr, "orvo-agent: no guardian: %s\n", std::strerror(errno));
  if (process_ > 0) {
    kill(process_, SIGKILL);  // Before it could take the lifeline's end for the agent's.
    waitpid(process_, nullptr, 0);
  }
  successor_.start(retryPause);
}

void Guardian::bury() {
  waitpid(process_, nullptr, 0);
  std::fprintf(stderr, "orvo-agent: its guardian has ended; here is another\n");
  const bool isYoung = std::chrono::steady_clock::now() - started_ < shortLife;
  successor_.start(isYoung ? shortLife : std::chrono::seconds(0));
}

void Guardian::replace() {
  ended_.reset();
  for (const int descriptor : {ending_, lifeline_}) close(descriptor);
  start();
}

std::optional<Guardian::Bequest> Guardian::outlive(int count, char** arguments) {
  if (count != 3 || std::strcmp(arguments[1], argument) != 0) return std::nullopt;
  prctl(PR_SET_NAME, processName);
  close_range(STDERR_FILENO + 1, std::numeric_limits<int>::max(), 0);
  Bequest bequest{};
  const char* agent = arguments[2];
  std::from_chars(agent, agent + std::strlen(agent), bequest.agent);
  waitForEnd(lifelinePlace);
  bequest.kept = contents(memoryPlace);
  return bequest;
}

// Cut after writing, not before: at no moment does the memory hold less than a whole text.
void Guardian::keep(const std::string& text) const {
  if (pwrite(memory_, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size())) [[maybe_unused]]
    const int cut = ftruncate(memory_, static_cast<off_t>(text.size()));
}

}  // namespace orvo
