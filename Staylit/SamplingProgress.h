#pragma once

#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/Console.h"

namespace staylit {

/// One line on standard error that tells how far the sampling is and how long it still takes. The
/// line is shown only if standard error is a terminal, and disappears with this object.
class SamplingProgress {
 public:
  SamplingProgress(tidewell::Console& console, tidewell::Seconds duration);
  ~SamplingProgress();
  SamplingProgress(const SamplingProgress&) = delete;
  SamplingProgress& operator=(const SamplingProgress&) = delete;

  /// `elapsed` is neither negative nor more than the whole duration.
  void show(tidewell::Seconds elapsed);

 private:
  tidewell::Console& console_;
  tidewell::Seconds duration_;
  bool visible_;
};

}  // namespace staylit
