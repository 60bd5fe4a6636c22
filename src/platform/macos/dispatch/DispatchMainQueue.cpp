#include "platform/macos/dispatch/DispatchMainQueue.h"

#include <dispatch/dispatch.h>
#include <pthread.h>

#include <memory>
#include <utility>

namespace orvo {

namespace {

void run(void* context) { (*std::unique_ptr<MainQueue::Task>(static_cast<MainQueue::Task*>(context)))(); }

}  // namespace

void DispatchMainQueue::post(Task task) {
  dispatch_async_f(dispatch_get_main_queue(), std::make_unique<Task>(std::move(task)).release(), run);
}

bool DispatchMainQueue::isMainThread() const { return pthread_main_np() != 0; }

}  // namespace orvo
