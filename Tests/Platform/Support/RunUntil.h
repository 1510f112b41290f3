#pragma once

#include <chrono>
#include <functional>

#include "Platform/Linux/Loop/EventLoop.h"

namespace platform::testing {

/// Runs `loop` until `condition` holds, and returns whether it does. The limit only keeps a failing
/// test from lasting for ever.
inline bool runUntil(EventLoop& loop, const std::function<bool()>& condition) {
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > limit) return false;
    sd_event_run(loop.handle(), 10'000);
  }
  return true;
}

/// Runs the work that is ready or becomes ready within a moment.
inline void runBriefly(EventLoop& loop) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(150);
  while (std::chrono::steady_clock::now() < end)
    sd_event_run(loop.handle(), 10'000);
}

}  // namespace platform::testing
