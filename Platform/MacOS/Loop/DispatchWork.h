#pragma once

#include <dispatch/dispatch.h>

#include <functional>

namespace platform {

/// Submits `work` to `queue`, which runs it later with an autorelease pool of its own. Safe from
/// any thread.
void dispatchAsync(dispatch_queue_t queue, std::function<void()> work);

}  // namespace platform
