#include "bridge/FrameworkEntry.h"
#include "bridge/MenuBarBackend.h"
#include "platform/macos/cocoa/FakeFramework.h"
#include "platform/macos/foundation/SystemFramework.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace orvo {
namespace {

using fake::Fault;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// The adapter under the real bridge, with a library below a root of its own.
class SystemFrameworkTest : public ::testing::Test {
 protected:
  SystemFrameworkTest() { setConcealmentFramework(&framework_); }
  ~SystemFrameworkTest() override {
    if (fake_ != nullptr) fake_->forget();
    EXPECT_EQ(releases_, requests_);
    setConcealmentFramework(nullptr);
  }

  void SetUp() override {
    ASSERT_TRUE(QLMenuBarBackendAvailable());
    void* const library = dlopen((std::string(ORVO_FAKE_ROOT) + path).c_str(), RTLD_LAZY | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr);
    fake_ = reinterpret_cast<decltype(&orvoFakeFramework)>(dlsym(library, "orvoFakeFramework"))();
    script({});
  }

  void script(Fault fault, const char* reason = nullptr) {
    fake_->fault = fault;
    fake_->reason = reason;
    fake_->answersAtOnce = false;
    fake_->configurations = fake_->assertions = fake_->invalidations = 0;
  }
  QLAssertionRef create(const std::vector<const char*>& bundles = {}) {
    ++requests_;
    const auto invoke = [](void* context, const QLError* error) {
      auto& answers = static_cast<SystemFrameworkTest*>(context)->answers_;
      if (error == nullptr) return void(answers.emplace_back("no error"));
      answers.push_back(std::string(error->domain) + ' ' + std::to_string(error->code) + ' ' +
                        error->localizedDescription);
    };
    const auto release = [](void* context) { ++static_cast<SystemFrameworkTest*>(context)->releases_; };
    return QLCreateMenuBarAssertion(bundles.data(), bundles.size(), {invoke, release, this});
  }

  static constexpr const char* path = "/System/Library/PrivateFrameworks/MenuBarClientCore.framework/MenuBarClientCore";
  SystemFramework framework_{ORVO_FAKE_ROOT};
  fake::FakeFramework* fake_ = nullptr;
  std::vector<std::string> answers_;
  int requests_ = 0;
  int releases_ = 0;
};

TEST_F(SystemFrameworkTest, ARequestHoldsItsAssertionUntilItIsReleased) {
  QLAssertionRef assertion = create({"org.example.One", "org.example.Zwei-ü"});
  EXPECT_THAT(fake_->items, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8));
  EXPECT_THAT(fake_->bundles, ElementsAre("org.example.One", "org.example.Zwei-ü"));
  EXPECT_EQ(fake_->assertions, 1);
  QLReleaseMenuBarAssertion(assertion);
  EXPECT_EQ(fake_->invalidations, 1);
  EXPECT_EQ(fake_->assertions, 0);
  EXPECT_EQ(fake_->configurations, 0);
  EXPECT_THAT(answers_, IsEmpty());
  QLReleaseMenuBarAssertion(create());
  EXPECT_THAT(fake_->bundles, IsEmpty());
}

TEST_F(SystemFrameworkTest, AnswersComeAtOnceLateTwiceAndFromOtherThreads) {
  fake_->answersAtOnce = true;
  QLReleaseMenuBarAssertion(create());
  EXPECT_THAT(answers_, ElementsAre("no error"));
  fake_->answersAtOnce = false;
  QLAssertionRef assertion = create();
  const std::string domain(3000, 'd');
  constexpr std::int64_t code = -0x7000000000000001;
  std::thread([&] { fake_->answer(domain, code, "näher"); }).join();
  fake_->answer("", 0, "");
  QLReleaseMenuBarAssertion(assertion);
  fake_->answer("", 0, "");
  EXPECT_THAT(answers_, ElementsAre("no error", domain + ' ' + std::to_string(code) + " näher"));
}

struct RaisingCase {
  Fault fault;
  const char* reason;
  std::vector<std::string> answers;
  int configurationsLeft;
  int assertionsLeft;
};

// An object whose initialiser raised may be gone or not; the adapter leaves it alone.
TEST_F(SystemFrameworkTest, NothingThatTheFrameworkRaisesOrWithholdsGetsFurtherThanTheBridge) {
  const std::string fallback = "Orvo.MenuBar 1 Menu bar activation failed.";
  const std::vector<RaisingCase> cases{{Fault::configurationIsNil, nullptr, {}, 0, 0},
                                       {Fault::configurationRaises, "full", {"Orvo.MenuBar 1 full"}, 1, 0},
                                       {Fault::configurationRaises, nullptr, {fallback}, 1, 0},
                                       {Fault::assertionIsNil, nullptr, {}, 0, 0},
                                       {Fault::assertionRaises, "busy", {"Orvo.MenuBar 1 busy"}, 0, 1},
                                       {Fault::activationRaises, "no", {"Orvo.MenuBar 1 no"}, 0, 0},
                                       {Fault::activationRaises, nullptr, {fallback}, 0, 0},
                                       {Fault::activationRaisesTooLate, "no", {"no error"}, 0, 0}};
  for (const RaisingCase& each : cases) {
    script(each.fault, each.reason);
    fake_->answersAtOnce = each.fault == Fault::activationRaisesTooLate;
    answers_.clear();
    EXPECT_EQ(create(), nullptr);
    fake_->forget();
    EXPECT_EQ(answers_, each.answers);
    EXPECT_EQ(fake_->configurations, each.configurationsLeft) << static_cast<int>(each.fault);
    EXPECT_EQ(fake_->assertions, each.assertionsLeft) << static_cast<int>(each.fault);
  }
}

TEST_F(SystemFrameworkTest, AReleaseThatRaisesIsLogged) {
  fake_->fault = Fault::invalidationRaises;
  for (const auto& [reason, shown] :
       {std::pair("stuck", "stuck"), std::pair<const char*, const char*>(nullptr, "(null)")}) {
    fake_->reason = reason;
    QLAssertionRef assertion = create();
    ::testing::internal::CaptureStderr();
    QLReleaseMenuBarAssertion(assertion);
    EXPECT_THAT(::testing::internal::GetCapturedStderr(),
                HasSubstr(std::string("Orvo: could not release menu bar assertion: ") + shown));
    EXPECT_EQ(fake_->assertions, 0);
  }
}

TEST_F(SystemFrameworkTest, NoFileOrClassOrMessageIsNoFault) {
  EXPECT_FALSE(framework_.load("/System/Library/None"));
  EXPECT_EQ(framework_.classNamed("MBNoSuchClass"), nullptr);
  EXPECT_FALSE(framework_.instancesRespondTo(framework_.classNamed("MBAssessmentModeAssertion"), "noSuchMessage:"));
  const auto object = framework_.makeAssertion(framework_.classNamed("MBAssessmentModeAssertion"));
  EXPECT_TRUE(framework_.respondsTo(*object, "invalidate"));
  EXPECT_FALSE(framework_.respondsTo(*object, "noSuchMessage:"));
}

}  // namespace
}  // namespace orvo
