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

/// Sees to it that nothing is held for ever by a loop that stands still.
///
/// Once there are windows, the libraries that draw them may wait on the main thread for a display
/// that no longer answers. Nobody can call them back. But what the program holds goes with the
/// process, so the process is ended then: as it is when a display breaks altogether. A thread of
/// its own looks now and then whether the loop has moved. It counts looks and not time, so that a
/// process that was stopped, or a machine that slept, is not taken for one that hangs.
class LoopGuard {
 public:
  struct Patience {
    std::chrono::milliseconds look = std::chrono::seconds(5);
    int looks = 6;           ///< So often in a row must the loop stand still.
    int looksWhenEnded = 2;  ///< The same while a signal to end waits to be handled.
  };

  /// `lost` runs on the guard's thread, once; by default it ends the process with status 1. The
  /// loop must outlive this. Main thread only.
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
