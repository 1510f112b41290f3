#pragma once

#import <Foundation/Foundation.h>

#include "Tidewell/Ports/MainLoop.h"

namespace platform {

/// A timer on the main run loop, in its common modes.
class RunLoopTimer final : public tidewell::RepeatingTimer {
 public:
  RunLoopTimer(tidewell::Seconds interval, std::function<void()> action);
  ~RunLoopTimer() override;
  RunLoopTimer(const RunLoopTimer&) = delete;
  RunLoopTimer& operator=(const RunLoopTimer&) = delete;

  void setTolerance(tidewell::Seconds tolerance) override;
  void invalidate() override;

 private:
  NSTimer* const timer_;
};

}  // namespace platform
