// The adapter under the real bridge. It loads an empty library below a root of its own; the framework's classes
// are stand-ins here, which do what a test says.
#include "bridge/FrameworkEntry.h"
#include "bridge/MenuBarBackend.h"
#include "platform/macos/foundation/NsText.h"
#include "platform/macos/foundation/SystemFramework.h"

#include <Block.h>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <thread>

namespace {

using Handler = void (^)(NSError*);
constexpr int blockIsOnTheHeap = 1 << 24;  // of the flags behind a block's class

struct Script {
  std::string fault{};           // "configuration", "assertion", "activation", "late" or "invalidation"
  const char* reason = nullptr;  // of what is raised; an empty one stands for nil instead of an exception
  bool answersAtOnce = false;
  std::map<Class, int> alive{};
  int invalidations = 0;
  std::string allowed{};
} script;
Handler handler = nil;
std::int64_t code = 0;

void forget() {
  if (handler != nil) Block_release(handler);
  handler = nil;
}

}  // namespace

// clang-format off
// GNUstep keeps 32 bits of a code, and makes a reason up where there is none.
@interface WideError : NSError @end
@implementation WideError - (NSInteger)code { return code; } @end
@interface FakeException : NSException @end
@implementation FakeException - (NSString*)reason { return script.reason ? orvo::nsText(script.reason) : nil; } @end

namespace {

void answer(const std::string& domain, std::int64_t with, const std::string& told) {
  code = with;
  @autoreleasepool {
    NSDictionary* const information = @{NSLocalizedDescriptionKey : orvo::nsText(told)};
    handler(with == 0 ? nil : [WideError errorWithDomain:orvo::nsText(domain) code:1 userInfo:information]);
  }
}

bool raises(const char* fault) {
  if (script.fault != fault) return false;
  if (script.reason != nullptr && *script.reason == 0) return true;
  @throw [FakeException exceptionWithName:@"Fake" reason:@"" userInfo:nil];
}

}  // namespace

@interface Counted : NSObject @end
@implementation Counted
+ (id)alloc { ++script.alive[self]; return [super alloc]; }
- (void)dealloc { --script.alive[[self class]]; [super dealloc]; }
- (id)unless:(const char*)fault { return raises(fault) ? [self release], nil : self; }
@end

@interface MBAssessmentModeConfiguration : Counted @end
@implementation MBAssessmentModeConfiguration
- (id)initWithAllowedSystemItems:(NSArray*)items allowedBundleIdentifiers:(NSArray*)bundles {
  NSArray* const both = @[[items componentsJoinedByString:@","], [bundles componentsJoinedByString:@","]];
  script.allowed = *orvo::textOf([both componentsJoinedByString:@" "]);
  return [self unless:"configuration"];
}
@end

@interface MBAssessmentModeAssertion : Counted @end
@implementation MBAssessmentModeAssertion
- (id)init { return [self unless:"assertion"]; }
- (void)activateWithConfiguration:(id)configuration completionHandler:(Handler)completion {
  EXPECT_TRUE([configuration isKindOfClass:[MBAssessmentModeConfiguration class]]);
  EXPECT_TRUE((reinterpret_cast<int*>(completion)[2] & blockIsOnTheHeap) != 0);
  raises("activation");
  forget();
  handler = Block_copy(completion);
  if (script.answersAtOnce) answer("", 0, "");
  raises("late");
}
- (void)invalidate { ++script.invalidations; raises("invalidation"); }
@end
// clang-format on

namespace orvo {
namespace {

class SystemFrameworkTest : public ::testing::Test {
 protected:
  SystemFrameworkTest() { setConcealmentFramework(&framework_); }
  ~SystemFrameworkTest() override {
    forget();
    EXPECT_EQ(releases_, requests_);
    setConcealmentFramework(nullptr);
  }

  void SetUp() override {
    script = {};
    ASSERT_TRUE(QLMenuBarBackendAvailable());
    const char* path = "/System/Library/PrivateFrameworks/MenuBarClientCore.framework/MenuBarClientCore";
    ASSERT_NE(dlopen((std::string(ORVO_FAKE_ROOT) + path).c_str(), RTLD_LAZY | RTLD_NOLOAD), nullptr);
  }
  QLAssertionRef create(const std::vector<const char*>& bundles = {}) {
    ++requests_;
    const auto invoke = [](void* context, const QLError* error) {
      auto& answers = static_cast<SystemFrameworkTest*>(context)->answers_;
      answers.emplace_back("no error");
      if (error == nullptr) return;
      answers.back() = error->domain + (' ' + std::to_string(error->code) + ' ') + error->localizedDescription;
    };
    const auto release = [](void* context) { ++static_cast<SystemFrameworkTest*>(context)->releases_; };
    return QLCreateMenuBarAssertion(bundles.data(), bundles.size(), {invoke, release, this});
  }
  static int configurations() { return script.alive [[MBAssessmentModeConfiguration class]]; }
  static int assertions() { return script.alive [[MBAssessmentModeAssertion class]]; }

  SystemFramework framework_{ORVO_FAKE_ROOT};
  std::vector<std::string> answers_;
  int requests_ = 0;
  int releases_ = 0;
};

TEST_F(SystemFrameworkTest, ARequestHoldsItsAssertionUntilItIsReleased) {
  QLAssertionRef assertion = create({"org.example.One", "org.example.Zwei-ü"});
  EXPECT_EQ(script.allowed, "0,1,2,3,4,5,6,7,8 org.example.One,org.example.Zwei-ü");
  EXPECT_EQ(assertions(), 1);
  QLReleaseMenuBarAssertion(assertion);
  EXPECT_EQ(script.invalidations, 1);
  EXPECT_EQ(assertions() + configurations(), 0);
  EXPECT_TRUE(answers_.empty());
}

TEST_F(SystemFrameworkTest, AnswersComeAtOnceLateTwiceAndFromOtherThreads) {
  script.answersAtOnce = true;
  QLReleaseMenuBarAssertion(create());
  script.answersAtOnce = false;
  QLAssertionRef assertion = create();
  const std::string domain(3000, 'd');
  std::thread([&] { answer(domain, -0x7000000000000001, "näher"); }).join();
  answer("", 0, "");
  QLReleaseMenuBarAssertion(assertion);
  answer("", 0, "");
  EXPECT_EQ(answers_, (std::vector<std::string>{"no error", domain + " -8070450532247928833 näher"}));
}

// An object whose initialiser raised may be gone or not; the adapter leaves it alone.
TEST_F(SystemFrameworkTest, NothingThatTheFrameworkRaisesOrWithholdsGetsFurtherThanTheBridge) {
  const std::string fallback = "Orvo.MenuBar 1 Menu bar activation failed.";
  const std::vector<std::tuple<std::string, const char*, std::vector<std::string>, int, int>> cases{
      {"configuration", "", {}, 0, 0},
      {"configuration", "full", {"Orvo.MenuBar 1 full"}, 1, 0},
      {"configuration", nullptr, {fallback}, 1, 0},
      {"assertion", "", {}, 0, 0},
      {"assertion", "busy", {"Orvo.MenuBar 1 busy"}, 0, 1},
      {"activation", "no", {"Orvo.MenuBar 1 no"}, 0, 0},
      {"activation", nullptr, {fallback}, 0, 0},
      {"late", "no", {"no error"}, 0, 0}};
  for (const auto& [fault, reason, answers, configurationsLeft, assertionsLeft] : cases) {
    script = {.fault = fault, .reason = reason, .answersAtOnce = fault == "late"};
    answers_.clear();
    EXPECT_EQ(create(), nullptr);
    forget();
    EXPECT_EQ(answers_, answers) << fault;
    EXPECT_EQ(std::pair(configurations(), assertions()), std::pair(configurationsLeft, assertionsLeft)) << fault;
  }
}

TEST_F(SystemFrameworkTest, AReleaseThatRaisesIsLogged) {
  for (const char* reason : {"stuck", static_cast<const char*>(nullptr)}) {
    script = {.fault = "invalidation", .reason = reason};
    QLAssertionRef assertion = create();
    ::testing::internal::CaptureStderr();
    QLReleaseMenuBarAssertion(assertion);
    const std::string logged = "could not release menu bar assertion: " + std::string(reason ? reason : "(null)");
    EXPECT_THAT(::testing::internal::GetCapturedStderr(), ::testing::HasSubstr(logged));
    EXPECT_EQ(assertions(), 0);
  }
}

TEST_F(SystemFrameworkTest, NoFileOrClassOrMessageIsNoFault) {
  EXPECT_FALSE(framework_.load("/System/Library/None"));
  EXPECT_EQ(framework_.classNamed("MBNoSuchClass"), nullptr);
  const auto* const type = framework_.classNamed("MBAssessmentModeAssertion");
  EXPECT_FALSE(framework_.instancesRespondTo(type, "noSuchMessage:"));
  EXPECT_FALSE(framework_.respondsTo(*framework_.makeAssertion(type), "noSuchMessage:"));
}

}  // namespace
}  // namespace orvo
