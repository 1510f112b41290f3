#pragma once

#include "Platform/Linux/Bus/BusTiming.h"

namespace platform {

/// Keeps one from trying again too soon what just failed: pauses that double up to a limit.
/// A value; one thread.
class Backoff {
 public:
  Backoff(BusTiming::Span firstPause, BusTiming::Span longestPause);

  /// The error to answer with instead of trying, or 0 when it may be tried at `now`.
  [[nodiscard]] int remembered(BusTiming::Point now) const;
  /// How long until it may be tried; 0 when it may be at `now`.
  [[nodiscard]] BusTiming::Span remaining(BusTiming::Point now) const;

  /// Begins a pause, twice as long as the last one unless `succeeded` came in between.
  void failed(int error, BusTiming::Point now);
  void succeeded();

 private:
  BusTiming::Span firstPause_;
  BusTiming::Span longestPause_;
  BusTiming::Span pause_{};
  BusTiming::Point until_{};
  int error_ = 0;
};

}  // namespace platform
