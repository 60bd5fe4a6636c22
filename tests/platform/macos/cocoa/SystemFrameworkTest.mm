// The adapter under the real bridge. It loads an empty library below a root of its own; the framework's classes
// are stand-ins here, which do what a test says.
#include "bridge/FrameworkEntry.h"
#include "bridge/MenuBarBackend.h"
#include "platform/macos/foundation/NsText.h"
#include "platform/macos/foundation/SystemFramework.h"

#include <Block.h>
#include <dlfcn.h>
#include <gmock/gmock.h>

#include <thread>

namespace {

using Handler = void (^)(NSError*);
constexpr int blockIsOnTheHeap = 1 << 24;  // of the flags behind a block's class

struct Script {
  std::string fault{};           // "configuration", "assertion", "activation", "late" or "invalidation"
  const char* reason = nullptr;  // of what is raised; an empty one stands for nil instead of an exception
  std::vector<std::string> calls{};
  std::vector<std::string> answers{};
  int alive = 0;  // objects, and requests that may still be answered
} script;
Handler handler = nil;
std::int64_t code = 0;

void keep(Handler given) {
  Block_release(handler);
  handler = Block_copy(given);
}

}  // namespace

// clang-format off
// GNUstep keeps 32 bits of a code, and makes a reason up where there is none.
@interface WideError : NSError @end @implementation WideError - (NSInteger)code { return code; } @end
@interface FakeException : NSException @end @implementation FakeException
- (NSString*)reason { return script.reason ? orvo::nsText(script.reason) : nil; } @end

namespace {

void answer(const std::string& domain, std::int64_t with, const std::string& told) {
  code = with;
  @autoreleasepool {
    NSDictionary* const information = @{NSLocalizedDescriptionKey : orvo::nsText(told)};
    handler(with == 0 ? nil : [WideError errorWithDomain:orvo::nsText(domain) code:1 userInfo:information]);
  }
}

id unless(const char* fault, id made) {
  if (script.fault != fault) return made;
  if (script.reason != nullptr && *script.reason == 0) return [made release], nil;
  @throw [FakeException exceptionWithName:@"Fake" reason:@"" userInfo:nil];
}

}  // namespace

@interface Counted : NSObject @end @implementation Counted
+ (id)alloc { ++script.alive; return [super alloc]; }
- (void)dealloc { --script.alive; [super dealloc]; }
@end

@interface MBAssessmentModeConfiguration : Counted @end @implementation MBAssessmentModeConfiguration
- (id)initWithAllowedSystemItems:(NSArray*)items allowedBundleIdentifiers:(NSArray*)bundles {
  for (NSArray* each in @[items, bundles]) script.calls.push_back(*orvo::textOf([each componentsJoinedByString:@" "]));
  return unless("configuration", self);
}
@end

@interface MBAssessmentModeAssertion : Counted @end @implementation MBAssessmentModeAssertion
- (id)init { return unless("assertion", self); }
- (void)activateWithConfiguration:(id)configuration completionHandler:(Handler)completion {
  EXPECT_TRUE([configuration isKindOfClass:[MBAssessmentModeConfiguration class]]);
  EXPECT_TRUE((reinterpret_cast<int*>(completion)[2] & blockIsOnTheHeap) != 0);
  unless("activation", self);
  keep(completion);
  if (script.fault == "late") answer("", 0, "");
  unless("late", self);
}
- (void)invalidate { script.calls.emplace_back("invalidate"); unless("invalidation", self); }
@end
// clang-format on

namespace orvo {

using namespace ::testing;

class SystemFrameworkTest : public ::testing::Test {
 protected:
  SystemFrameworkTest() {
    setConcealmentFramework(&framework_);
    EXPECT_TRUE(QLMenuBarBackendAvailable());
    script = {};
  }
  ~SystemFrameworkTest() override {
    keep(nil);
    EXPECT_EQ(script.alive, 0);
    setConcealmentFramework(nullptr);
  }
  static QLAssertionRef create(const std::vector<const char*>& bundles = {}) {
    const auto invoke = [](void*, const QLError* error) {
      script.answers.push_back(
          !error ? "" : error->domain + (' ' + std::to_string(error->code) + ' ') + error->localizedDescription);
    };
    ++script.alive;
    return QLCreateMenuBarAssertion(bundles.data(), bundles.size(), {invoke, [](void*) { --script.alive; }, {}});
  }

  SystemFramework framework_{ORVO_FAKE_ROOT};
};

// Answers come late, twice, from another thread, or after the end.
TEST_F(SystemFrameworkTest, ARequestHoldsItsAssertionUntilItIsReleasedAndHearsOneAnswer) {
  QLAssertionRef assertion = create({"org.example.One", "org.example.Zwei-ü"});
  EXPECT_EQ(script.alive, 2) << "an assertion and its request";
  const std::string domain(3000, 'd');
  std::thread([&] { answer(domain, -0x7000000000000001, "näher"); }).join();
  answer("", 0, "");
  QLReleaseMenuBarAssertion(assertion);
  EXPECT_THAT(script.calls, ElementsAre("0 1 2 3 4 5 6 7 8", "org.example.One org.example.Zwei-ü", "invalidate"));
  EXPECT_EQ(script.alive, 1) << "what may still answer";
  answer("", 0, "");
  EXPECT_THAT(script.answers, ElementsAre(domain + " -8070450532247928833 näher"));
}

// An object whose initialiser raised may be gone or not; the adapter leaves it alone.
TEST_F(SystemFrameworkTest, NothingThatTheFrameworkRaisesOrWithholdsGetsFurtherThanTheBridge) {
  const std::vector<std::tuple<std::string, const char*, std::vector<std::string>, int>> cases{
      {"configuration", "", {}, 0},
      {"configuration", "full", {"Orvo.MenuBar 1 full"}, 1},
      {"assertion", "", {}, 0},
      {"assertion", "busy", {"Orvo.MenuBar 1 busy"}, 1},
      {"activation", "no", {"Orvo.MenuBar 1 no"}, 0},
      {"activation", nullptr, {"Orvo.MenuBar 1 Menu bar activation failed."}, 0},
      {"late", "no", {""}, 0},
      {"invalidation", "stuck", {}, 0},
      {"invalidation", nullptr, {}, 0}};
  for (const auto& [fault, reason, answers, alive] : cases) {
    script = {.fault = fault, .reason = reason};
    internal::CaptureStderr();
    QLAssertionRef made = create();
    EXPECT_EQ(made != nullptr, fault == "invalidation");
    QLReleaseMenuBarAssertion(made);
    const std::string logged = "could not release menu bar assertion: " + std::string(reason ? reason : "(null)");
    EXPECT_EQ(internal::GetCapturedStderr().find(logged) != std::string::npos, fault == "invalidation") << fault;
    keep(nil);
    EXPECT_EQ(std::pair(script.answers, script.alive), std::pair(answers, alive)) << fault;
  }
}

TEST_F(SystemFrameworkTest, NoFileOrClassOrMessageIsNoFault) {
  EXPECT_FALSE(framework_.load("/System/Library/None"));
  EXPECT_NE(dlopen("libthread_db.so.1", RTLD_LAZY | RTLD_NOLOAD), nullptr);
  EXPECT_EQ(framework_.classNamed("MBNoSuchClass"), nullptr);
  const auto* const type = framework_.classNamed("MBAssessmentModeAssertion");
  EXPECT_FALSE(framework_.instancesRespondTo(type, "noSuchMessage:"));
  EXPECT_FALSE(framework_.respondsTo(*framework_.makeAssertion(type), "noSuchMessage:"));
}

}  // namespace orvo
