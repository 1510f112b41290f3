#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "Platform/Linux/Loop/EventLoop.h"

namespace staylit {

/// Ends the process when the loop stands still, so that no hold lasts for ever.
///
/// Once there are windows, the libraries that draw them may wait on the main thread for a display
/// that no longer answers. Nobody can interrupt this wait. But every hold ends with the process. So
/// the guard ends the process, as the libraries do when a display breaks altogether. A thread of
/// its own looks now and then whether the loop has moved. The guard counts looks and not time, so
/// that it does not take a process that was stopped, or a machine that slept, for one that hangs.
class LoopGuard {
 public:
  struct Patience {
    std::chrono::milliseconds look = std::chrono::seconds(5);
    /// The process ends after so many looks in a row at a loop that stands still.
    int looks = 6;
    /// The same while a signal to end the process waits for the loop.
    int looksWhenAskedToEnd = 2;
  };

  /// `lost` runs once, on the guard's thread; by default it ends the process with status 1. The
  /// loop must outlive the guard. Main thread only.
  explicit LoopGuard(platform::EventLoop& loop);
  LoopGuard(platform::EventLoop& loop, Patience patience, std::function<void()> lost);
  ~LoopGuard();
  LoopGuard(const LoopGuard&) = delete;
  LoopGuard& operator=(const LoopGuard&) = delete;

 private:
  void watch();
  bool waitForNextLook();

  const Patience patience_;
  const std::function<void()> lost_;
  std::atomic<unsigned> beats_ = 0;
  std::unique_ptr<tidewell::RepeatingTimer> timer_;
  std::mutex mutex_;
  std::condition_variable ending_;
  bool isEnding_ = false;
  std::thread thread_;
};

}  // namespace staylit
