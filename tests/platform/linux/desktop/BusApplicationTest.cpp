#include "platform/linux/desktop/BusApplication.h"

#include "PrivateSession.h"
#include "support/QtEventLoop.h"

#include <QDBusMessage>

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <array>

namespace orvo {

using test::runUntil;

namespace {

using test::callAndWait;
using test::otherConnection;

using Outcome = BusApplication::Outcome;

constexpr const char* identifier = "local.orvo.Orvo-Test";

TEST(BusApplicationTest, OfTwoThatStartOneRunsAndIsAskedToReopen) {
  const auto first = otherConnection();
  int reopened = 0;
  BusApplication winner(*first, identifier, [&] { ++reopened; });
  EXPECT_EQ(winner.acquireOrHandOver(), Outcome::acquired);

  // The loser waits for the bus; the winner's loop turns meanwhile, as in another process.
  const auto second = otherConnection();
  std::optional<Outcome> outcome;
  std::thread loser([&] {
    BusApplication late(*second, identifier, [] { ADD_FAILURE() << "the loser must not be asked"; });
    outcome = late.acquireOrHandOver();
  });
  EXPECT_TRUE(runUntil([&] { return reopened == 1; }));
  loser.join();
  EXPECT_EQ(outcome, Outcome::handedOver);
}

TEST(BusApplicationTest, EveryWayToOpenReopensAndTheNameGoesWithItsOwner) {
  const auto connection = otherConnection();
  const auto caller = otherConnection();
  int reopened = 0;
  {
    BusApplication application(*connection, identifier, [&] { ++reopened; });
    EXPECT_EQ(application.acquireOrHandOver(), Outcome::acquired);
    const auto call = [&](const char* member, const QVariantList& arguments) {
      auto message =
          QDBusMessage::createMethodCall(identifier, "/local/orvo/Orvo_Test", "org.freedesktop.Application", member);
      message.setArguments(arguments);
      EXPECT_EQ(callAndWait(*caller, message).type(), QDBusMessage::ReplyMessage) << member;
    };
    call("Activate", {QVariantMap()});
    call("Open", {QStringList("file:///x"), QVariantMap()});
    call("ActivateAction", {"none", QVariantList(), QVariantMap()});
  }
  EXPECT_EQ(reopened, 2);
  BusApplication next(*caller, identifier, [] {});
  EXPECT_EQ(next.acquireOrHandOver(), Outcome::acquired);
}

}  // namespace
}  // namespace orvo
