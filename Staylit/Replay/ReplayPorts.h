#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Staylit/Replay/Tape.h"
#include "Tidewell/Ports/Ports.h"

namespace staylit {

/// A whole system that does what a tape tells, in virtual time. It is installed for as long as it
/// lives. All that is made on its ports must be destroyed before it. Main thread only.
///
/// Each application of the tape is one process. The network is measured at once, so that a tick
/// gets the totals that the recorded tick had. Nothing is held, logged or stored; a hold
/// counts as granted by "replay". A history is wanted (`keys::historyEnabled`).
class ReplayPorts {
 public:
  /// `settings` count in place of those of the tape.
  ReplayPorts(std::shared_ptr<tidewell::Text> text, tidewell::PropertyDictionary settings);
  ~ReplayPorts();
  ReplayPorts(const ReplayPorts&) = delete;
  ReplayPorts& operator=(const ReplayPorts&) = delete;

  [[nodiscard]] tidewell::Ports& ports() { return ports_; }

  /// The time of both clocks.
  void setTime(tidewell::Moment moment, tidewell::WallTime wallTime);
  /// The clock gives `next` from its next reading but one on.
  void setTime(tidewell::Moment moment, std::optional<tidewell::Moment> next);

  /// What the ports tell from now on. `version` changes whenever a place has got other names.
  void setInputs(const TapedInputs& inputs, std::uint32_t version);

  /// Fires the timers, and runs all that is posted.
  void fireTimers();
  void sleep();
  void wake();

 private:
  class Clock;
  class Settings;
  class Loop;
  class Processes;
  class Applications;
  class Queues;
  class Meter;
  class Power;
  class Assertions;
  class SleepNotifications;

  std::shared_ptr<Clock> clock_;
  std::shared_ptr<Settings> settings_;
  std::shared_ptr<Loop> loop_;
  std::shared_ptr<Processes> processes_;
  std::shared_ptr<Meter> meter_;
  std::shared_ptr<Power> power_;
  std::shared_ptr<Assertions> assertions_;
  std::shared_ptr<SleepNotifications> sleepNotifications_;
  tidewell::Ports ports_;
  std::optional<tidewell::InstalledPorts> installed_;
};

}  // namespace staylit
