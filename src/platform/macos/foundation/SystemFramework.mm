#include "platform/macos/foundation/SystemFramework.h"

#include "platform/macos/foundation/NsText.h"
#include "platform/macos/foundation/Retained.h"

#import <Foundation/Foundation.h>

#include <Block.h>
#include <dlfcn.h>

#include <utility>

// The framework's messages. No header of its has them, and its classes are known at run time alone.
@interface NSObject (OrvoConcealment)
- (id)initWithAllowedSystemItems:(NSArray*)items allowedBundleIdentifiers:(NSArray*)bundles;
- (void)activateWithConfiguration:(id)configuration completionHandler:(void (^)(NSError*))completionHandler;
- (void)invalidate;
@end

namespace orvo {

namespace {

using ErrorBlock = void (^)(NSError*);

class SystemObject final : public FrameworkObject {
 public:
  explicit SystemObject(Retained<id> object) : object_(std::move(object)) {}
  ~SystemObject() override {
    @autoreleasepool {
      Retained<id> dropped = std::move(object_);
    }
  }
  SystemObject(const SystemObject&) = delete;
  SystemObject& operator=(const SystemObject&) = delete;

  id get() const { return object_.get(); }

 private:
  Retained<id> object_;
};

id objectOf(const FrameworkObject& object) { return static_cast<const SystemObject&>(object).get(); }

Class classOf(FrameworkClassRef type) { return (Class) const_cast<FrameworkClass*>(type); }

FrameworkObjectRef wrapped(Retained<id> object) {
  return object ? std::make_shared<SystemObject>(std::move(object)) : nullptr;
}

// A C++ exception must not leave an Objective-C handler or its pool, hence the detour.
template <typename Body>
void translatingExceptions(const Body& body) {
  std::optional<FrameworkException> raised;
  @autoreleasepool {
    @try {
      body();
    } @catch (NSException* exception) {
      raised = FrameworkException{textOf([exception reason])};
    }
  }
  if (raised) throw FrameworkException(*raised);
}

NSArray* numbers(std::span<const int> values) {
  NSMutableArray* const array = [NSMutableArray arrayWithCapacity:values.size()];
  for (const int value : values) [array addObject:[NSNumber numberWithInt:value]];
  return array;
}

NSArray* texts(const std::vector<std::string>& values) {
  NSMutableArray* const array = [NSMutableArray arrayWithCapacity:values.size()];
  for (const std::string& value : values) [array addObject:nsText(value)];
  return array;
}

std::optional<FrameworkError> errorOf(NSError* error) {
  if (error == nil) return std::nullopt;
  return FrameworkError{textOf([error domain]).value_or(""), [error code],
                        textOf([error localizedDescription]).value_or("")};
}

// The framework keeps the block for as long as it may answer, and calls it on a thread of its own.
class HeapBlock {
 public:
  explicit HeapBlock(ErrorBlock block) : block_(Block_copy(block)) {}
  ~HeapBlock() { Block_release(block_); }
  HeapBlock(const HeapBlock&) = delete;
  HeapBlock& operator=(const HeapBlock&) = delete;

  ErrorBlock get() const { return block_; }

 private:
  ErrorBlock block_;
};

}  // namespace

FrameworkClasses* SystemFramework::load(const char* path) {
  return dlopen((root_ + path).c_str(), RTLD_LAZY | RTLD_LOCAL) != nullptr ? this : nullptr;
}

FrameworkClassRef SystemFramework::classNamed(const char* name) {
  @autoreleasepool {
    return (FrameworkClassRef)NSClassFromString(nsText(name));
  }
}

bool SystemFramework::instancesRespondTo(FrameworkClassRef type, const char* message) {
  @autoreleasepool {
    return [classOf(type) instancesRespondToSelector:NSSelectorFromString(nsText(message))];
  }
}

bool SystemFramework::respondsTo(const FrameworkObject& object, const char* message) {
  @autoreleasepool {
    return [objectOf(object) respondsToSelector:NSSelectorFromString(nsText(message))];
  }
}

// Who owns an object whose initialiser has raised is nobody's to know, so it is let be.
FrameworkObjectRef SystemFramework::makeConfiguration(FrameworkClassRef type, std::span<const int> allowedSystemItems,
                                                      const std::vector<std::string>& allowedBundleIdentifiers) {
  Retained<id> made;
  translatingExceptions([&] {
    made = Retained<id>::owning([[classOf(type) alloc] initWithAllowedSystemItems:numbers(allowedSystemItems)
                                                         allowedBundleIdentifiers:texts(allowedBundleIdentifiers)]);
  });
  return wrapped(std::move(made));
}

FrameworkObjectRef SystemFramework::makeAssertion(FrameworkClassRef type) {
  Retained<id> made;
  translatingExceptions([&] { made = Retained<id>::owning([[classOf(type) alloc] init]); });
  return wrapped(std::move(made));
}

void SystemFramework::activate(FrameworkObject& assertion, const FrameworkObjectRef& configuration,
                               CompletionHandler completion) {
  translatingExceptions([&] {
    const CompletionHandler answer = std::move(completion);
    const HeapBlock block(^(NSError* error) {
      @autoreleasepool {
        answer(errorOf(error));
      }
    });
    [objectOf(assertion) activateWithConfiguration:objectOf(*configuration) completionHandler:block.get()];
  });
}

void SystemFramework::invalidate(FrameworkObject& assertion) {
  translatingExceptions([&] { [objectOf(assertion) invalidate]; });
}

void SystemFramework::log(const std::string& line) {
  @autoreleasepool {
    NSLog(@"%@", nsText(line));
  }
}

}  // namespace orvo
