#pragma once

#include "Platform/Linux/Bus/BusTiming.h"

namespace platform {

/// Prevents a retry too soon after a failure, by pauses that double up to a limit. A plain value;
/// one thread at a time.
class Backoff {
 public:
  Backoff(BusTiming::Span firstPause, BusTiming::Span longestPause);

  /// The error of the last failure, to be returned instead of a new attempt; 0 when an attempt is
  /// allowed at `now`.
  [[nodiscard]] int remembered(BusTiming::Point now) const;
  /// The time until an attempt is allowed; 0 when it is allowed at `now`.
  [[nodiscard]] BusTiming::Span remaining(BusTiming::Point now) const;

  /// Begins a pause. It is twice as long as the last one unless a success came in between.
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
