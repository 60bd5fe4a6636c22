#include "platform/macos/appkit/SystemLoginItem.h"

#include "platform/macos/foundation/NsText.h"

#import <ServiceManagement/ServiceManagement.h>

namespace orvo {

namespace {

std::optional<std::string> failure(BOOL succeeded, NSError* error) {
  if (succeeded) return std::nullopt;
  return textOf([error localizedDescription]).value_or("");
}

}  // namespace

std::optional<std::string> SystemLoginItem::registerItem() {
  @autoreleasepool {
    NSError* error = nil;
    const BOOL succeeded = [[SMAppService mainAppService] registerAndReturnError:&error];
    return failure(succeeded, error);
  }
}

std::optional<std::string> SystemLoginItem::unregisterItem() {
  @autoreleasepool {
    NSError* error = nil;
    const BOOL succeeded = [[SMAppService mainAppService] unregisterAndReturnError:&error];
    return failure(succeeded, error);
  }
}

LoginItemStatus SystemLoginItem::status() const {
  @autoreleasepool {
    return static_cast<LoginItemStatus>([[SMAppService mainAppService] status]);
  }
}

void SystemLoginItem::openSystemSettingsLoginItems() {
  @autoreleasepool {
    [SMAppService openSystemSettingsLoginItems];
  }
}

}  // namespace orvo
