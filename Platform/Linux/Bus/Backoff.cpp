#include "Platform/Linux/Bus/Backoff.h"

#include <algorithm>

namespace platform {

Backoff::Backoff(BusTiming::Span firstPause, BusTiming::Span longestPause)
    : firstPause_(firstPause), longestPause_(longestPause) {}

int Backoff::remembered(BusTiming::Point now) const {
  return remaining(now) > BusTiming::Span::zero() ? error_ : 0;
}

BusTiming::Span Backoff::remaining(BusTiming::Point now) const {
  return error_ == 0 ? BusTiming::Span::zero() : std::max(BusTiming::Span::zero(), until_ - now);
}

void Backoff::failed(int error, BusTiming::Point now) {
  pause_ = error_ == 0 ? firstPause_ : std::min(longestPause_, pause_ * 2);
  until_ = now + pause_;
  error_ = error;
}

void Backoff::succeeded() {
  error_ = 0;
}

}  // namespace platform
