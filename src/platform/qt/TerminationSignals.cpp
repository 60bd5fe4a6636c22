#include "platform/qt/TerminationSignals.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <utility>

namespace orvo {

namespace {

constexpr std::array handledSignals{SIGTERM, SIGINT, SIGHUP};
std::atomic<int> writeEnd{-1};

void wake(int /*signal*/) {
  const int error = errno;
  const char byte = 0;
  [[maybe_unused]] const auto written = write(writeEnd.load(), &byte, 1);
  errno = error;
}

void handle(int signal) {
  struct sigaction present {};
  sigaction(signal, nullptr, &present);
  if (present.sa_handler == SIG_IGN) return;
  struct sigaction ours {};
  ours.sa_handler = wake;
  ours.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
  sigaction(signal, &ours, nullptr);
}

void unhandle(int signal) {
  struct sigaction present {};
  sigaction(signal, nullptr, &present);
  if (present.sa_handler == wake) std::signal(signal, SIG_DFL);
}

}  // namespace

TerminationSignals::TerminationSignals(std::function<void()> received) {
  if (pipe2(pipe_.data(), O_CLOEXEC | O_NONBLOCK) != 0) return;
  writeEnd = pipe_[1];
  notifier_ = std::make_unique<QSocketNotifier>(pipe_[0], QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                   [this, callback = std::move(received)] {
                     char byte = 0;
                     if (read(pipe_[0], &byte, 1) == 1) callback();
                   });
  for (const int signal : handledSignals) handle(signal);
}

TerminationSignals::~TerminationSignals() {
  if (!notifier_) return;
  for (const int signal : handledSignals) unhandle(signal);
  notifier_.reset();
  writeEnd = -1;
  for (const int descriptor : pipe_) close(descriptor);
}

}  // namespace orvo
