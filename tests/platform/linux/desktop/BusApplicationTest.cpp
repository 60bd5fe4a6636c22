#include "platform/linux/desktop/BusApplication.h"

#include "platform/linux/busSupport/TestSession.h"

#include <gtest/gtest.h>

#include <thread>

namespace orvo {
namespace {

using Outcome = BusApplication::Outcome;

constexpr const char* identifier = "local.orvo.Orvo-Test";

TEST(BusApplicationTest, OfTwoThatStartOneRunsAndIsAskedToReopenUntilItsNameGoesWithIt) {
  const auto first = test::otherConnection();
  const auto second = test::otherConnection();
  BusApplication late(*second, identifier, [] { ADD_FAILURE() << "the loser must not be asked"; });
  {
    int reopened = 0;
    BusApplication winner(*first, identifier, [&] { ++reopened; });
    EXPECT_EQ(winner.acquireOrHandOver(), Outcome::acquired);
    // The loser waits for the bus; the winner's loop turns meanwhile, as in another process.
    std::thread loser([&] { EXPECT_EQ(late.acquireOrHandOver(), Outcome::handedOver); });
    EXPECT_TRUE(test::runUntil([&] { return reopened == 1; }));
    loser.join();
  }
  EXPECT_EQ(late.acquireOrHandOver(), Outcome::acquired);
}

}  // namespace
}  // namespace orvo
