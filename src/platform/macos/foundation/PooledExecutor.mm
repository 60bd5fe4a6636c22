#include "platform/macos/foundation/PooledExecutor.h"

#import <Foundation/Foundation.h>

#include <utility>

namespace orvo {

void PooledExecutor::post(std::function<void()> task) {
  executor_.post([task = std::move(task)] {
    @autoreleasepool {
      task();
    }
  });
}

}  // namespace orvo
