#include "platform/macos/appkit/SystemLoginItem.h"

#include "platform/macos/foundation/NsText.h"

#import <ServiceManagement/ServiceManagement.h>

namespace orvo {

std::optional<std::string> SystemLoginItem::setRegistered(bool registered) {
  @autoreleasepool {
    SMAppService* const service = [SMAppService mainAppService];
    NSError* error = nil;
    const BOOL succeeded =
        registered ? [service registerAndReturnError:&error] : [service unregisterAndReturnError:&error];
    if (succeeded) return std::nullopt;
    return textOf([error localizedDescription]).value_or("");
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
