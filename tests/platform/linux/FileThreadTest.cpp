#include "platform/linux/FileThread.h"

#include <fcntl.h>
#include <unistd.h>

#include <thread>

#include <gtest/gtest.h>

namespace orvo {

TEST(FileThreadTest, WhatIsHeldUpIsNotAskedAgainKeepsNothingOpenAndLeavesRoomForSoMuchElse) {
  std::promise<int> gate;
  const auto wait = [answer = gate.get_future().share()] { return answer.get(); };
  const auto atOnce = [] { return 2; };
  EXPECT_EQ(FileThread::find("0", wait), std::nullopt);
  EXPECT_EQ(FileThread::find("0", atOnce), std::nullopt);
  const int own = open("/", O_RDONLY | O_CLOEXEC);
  EXPECT_EQ(FileThread::find("other", [=] { return fcntl(own, F_GETFD); }), -1);
  EXPECT_EQ(close(own), 0);
  for (std::size_t count = 1; count < FileThread::most; ++count)
    EXPECT_EQ(FileThread::find(std::to_string(count), wait), std::nullopt);
  EXPECT_EQ(FileThread::find("other", atOnce), std::nullopt);
  gate.set_value(1);
  while (FileThread::find("0", atOnce) != 2) std::this_thread::yield();
}

}  // namespace orvo
