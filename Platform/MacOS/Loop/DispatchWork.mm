#include "Platform/MacOS/Loop/DispatchWork.h"

#include <memory>
#include <utility>

namespace platform {

void dispatchAsync(dispatch_queue_t queue, std::function<void()> work) {
  using Work = std::function<void()>;
  auto owned = std::make_unique<Work>(std::move(work));
  dispatch_async_f(queue, owned.release(), [](void* context) {
    @autoreleasepool {
      const std::unique_ptr<Work> taken(static_cast<Work*>(context));
      (*taken)();
    }
  });
}

}  // namespace platform
