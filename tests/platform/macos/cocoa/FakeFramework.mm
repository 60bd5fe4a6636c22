#include "platform/macos/cocoa/FakeFramework.h"

#import <Foundation/Foundation.h>

#include <Block.h>

using orvo::fake::Fault;

namespace {

using Handler = void (^)(NSError*);
constexpr int blockIsOnTheHeap = 1 << 24;  // of the flags behind a block's class

orvo::fake::FakeFramework framework;
Handler handler = nil;

void forget() {
  if (handler != nil) Block_release(handler);
  handler = nil;
}

}  // namespace

// GNUstep keeps 32 bits of a code.
@interface WideError : NSError
@end

namespace {
std::int64_t wideCode = 0;
}

@implementation WideError
- (NSInteger)code {
  return wideCode;
}
@end

// GNUstep makes a reason up where there is none.
@interface ExceptionWithoutReason : NSException
@end

@implementation ExceptionWithoutReason
- (NSString*)reason {
  return nil;
}
@end

namespace {

void answer(const std::string& domain, std::int64_t code, const std::string& text) {
  wideCode = code;
  @autoreleasepool {
    NSDictionary* const information = [NSDictionary dictionaryWithObject:[NSString stringWithUTF8String:text.c_str()]
                                                                  forKey:NSLocalizedDescriptionKey];
    handler(code == 0 ? nil
                      : [WideError errorWithDomain:[NSString stringWithUTF8String:domain.c_str()] code:1
                                          userInfo:information]);
  }
}

void raiseIf(Fault fault) {
  if (framework.fault != fault) return;
  NSString* const reason = [NSString stringWithUTF8String:framework.reason != nullptr ? framework.reason : ""];
  if (framework.reason != nullptr) @throw [NSException exceptionWithName:@"Fake" reason:reason userInfo:nil];
  @throw [ExceptionWithoutReason exceptionWithName:@"Fake" reason:reason userInfo:nil];
}

}  // namespace

// clang-format off
@interface MBAssessmentModeConfiguration : NSObject @end
@implementation MBAssessmentModeConfiguration
- (id)initWithAllowedSystemItems:(NSArray*)items allowedBundleIdentifiers:(NSArray*)bundles {
  ++framework.configurations;
  framework.items.clear();
  for (NSNumber* item in items) framework.items.push_back([item intValue]);
  framework.bundles.clear();
  for (NSString* bundle in bundles) framework.bundles.emplace_back([bundle UTF8String]);
  raiseIf(Fault::configurationRaises);
  if (framework.fault != Fault::configurationIsNil) return self;
  [self release];
  return nil;
}
- (void)dealloc { --framework.configurations; [super dealloc]; }
@end

@interface MBAssessmentModeAssertion : NSObject @end
@implementation MBAssessmentModeAssertion
- (id)init {
  ++framework.assertions;
  raiseIf(Fault::assertionRaises);
  if (framework.fault != Fault::assertionIsNil) return self;
  [self release];
  return nil;
}
- (void)activateWithConfiguration:(id)configuration completionHandler:(Handler)completion {
  NSCAssert([configuration isKindOfClass:[MBAssessmentModeConfiguration class]], @"Not a configuration.");
  NSCAssert((reinterpret_cast<int*>(completion)[2] & blockIsOnTheHeap) != 0, @"Not a copy.");
  raiseIf(Fault::activationRaises);
  forget();
  handler = Block_copy(completion);
  if (framework.answersAtOnce) answer("", 0, "");
  raiseIf(Fault::activationRaisesTooLate);
}
- (void)invalidate { ++framework.invalidations; raiseIf(Fault::invalidationRaises); }
- (void)dealloc { --framework.assertions; [super dealloc]; }
@end
// clang-format on

orvo::fake::FakeFramework* orvoFakeFramework() {
  framework.answer = answer;
  framework.forget = forget;
  return &framework;
}
