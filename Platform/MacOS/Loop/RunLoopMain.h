#pragma once

#include <deque>
#include <mutex>

#include "Tidewell/Ports/MainLoop.h"

namespace platform {

/// The main thread's run loop. `async` may be called from any thread. Timers fire in the common
/// modes, and so also while a menu is open.
class RunLoopMain final : public tidewell::MainLoop {
 public:
  std::unique_ptr<tidewell::RepeatingTimer> scheduleRepeating(
      tidewell::Seconds interval, std::function<void()> action) override;
  void async(std::function<void()> work) override;

  /// Runs the work that `async` has been given so far, in its order. Main thread only.
  void runPending();

 private:
  /// Work that waits for the main thread. It is shared with the main queue, which may outlive its
  /// owner.
  class Pending {
   public:
    void add(std::function<void()> work);
    std::size_t count();
    void runNext();

   private:
    std::mutex lock_;
    std::deque<std::function<void()>> work_;
  };

  const std::shared_ptr<Pending> pending_ = std::make_shared<Pending>();
};

}  // namespace platform
