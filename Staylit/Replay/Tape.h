#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Staylit/EngineStatus.h"
#include "Tidewell/BatteryMonitor.h"
#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/PropertyValue.h"

namespace staylit {

// A tape: what the ports told the engine, and what the engine made of it, event by event. All types
// here are values.

/// What the processes of an application have used together. The sums wrap around.
struct TapedUsage {
  std::uint64_t cpuNanos = 0;
  std::uint64_t diskBytes = 0;
  std::uint64_t netBytes = 0;
  friend bool operator==(const TapedUsage&, const TapedUsage&) = default;
};

/// An application, with the names of the first of its processes.
struct TapedApplication {
  std::string executable;
  std::optional<std::string> bundleID;
  std::string display;
  TapedUsage usage;
  bool isPresent = false;  ///< Whether it had a process at the last tick.
};

/// All that a tick sees.
struct TapedInputs {
  /// An application keeps its place in the list from tick to tick, also while it is absent.
  std::vector<TapedApplication> applications;
  /// The programs with an assertion of their own, with the ignored ones.
  std::vector<std::string> asserting;
  tidewell::PowerState power{true, 100, false, false};
  tidewell::PropertyDictionary settings;  ///< All thirteen.
};

/// The tape begins, or goes on in another file. What follows refers to nothing before it.
struct TapeBegan {
  tidewell::Moment at;
  tidewell::WallTime wallTime;
  std::string program;    ///< Name and version of the program that recorded.
  std::uint64_t run{};    ///< Differs from run to run of that program.
  bool isFirst = true;    ///< Whether the run begins here too.
  bool isMadeUp = false;  ///< Whether unknown names were replaced.
};

/// A tick ended. What it saw is in the `TapedInputs`.
struct TapedTick {
  tidewell::Moment at;  ///< When the samples were taken.
  /// When the spell without work began, if it began at this tick.
  std::optional<tidewell::Moment> quietSince;
  /// When its length was measured; absent while something worked or a hold was forbidden.
  std::optional<tidewell::Moment> quietJudgedAt;
  EngineStatus outcome;  ///< The seconds of a countdown are not kept; they read as 0.
};

/// Something else happened.
struct TapeMark {
  enum class Kind : std::uint8_t { paused, resumed, willSleep, didWake, ended };
  tidewell::Moment at;
  Kind kind = Kind::ended;
};

/// Somebody set the wall clock.
struct TapeClockSet {
  tidewell::Moment at;
  tidewell::WallTime wallTime;
};

using TapeEvent = std::variant<TapeBegan, TapedTick, TapeMark, TapeClockSet>;

}  // namespace staylit
