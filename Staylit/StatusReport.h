#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Tidewell/BatteryMonitor.h"
#include "Tidewell/BusyApp.h"
#include "Tidewell/Ports/Clock.h"
#include "Tidewell/PowerAssertionReader.h"

namespace staylit {

/// What the running program does and why, as others are told who ask. A value: `StatusReporter`
/// makes it in the program that runs, and it may then cross to the program that asked.
///
/// While the program is paused it looks at nothing, so all that it sees is from before the pause.
struct StatusReport {
  /// Of the JSON form. Grows when a member goes or means something else; not when one is added.
  static constexpr std::int64_t kJsonVersion = 1;

  enum class State { holding, winding, blocked, idle, paused };

  /// A service that keeps the hold.
  struct Service {
    std::string name;
    /// When its own list was last seen to have the hold; absent while it was not.
    std::optional<tidewell::WallTime> seenAt;
  };

  State state = State::idle;
  std::string summary;         ///< As the menu's first line says it.
  tidewell::WallTime since{};  ///< When this state began.
  /// Under which the machine is held, or why it is not to be; empty where there is neither.
  std::string reason;
  std::int64_t releasesIn = 0;  ///< Seconds; 0 unless winding.
  /// When the pause ends by itself; absent where it does not, or where there is none.
  std::optional<tidewell::WallTime> resumesAt;
  std::vector<std::string> names;  ///< What it is held for; empty unless holding.
  std::vector<Service> services;   ///< Who keeps the hold; nobody does where this is empty.
  std::vector<tidewell::BusyApp> busy;
  std::vector<tidewell::BusyApp> candidates;  ///< Over a threshold, and not for long enough yet.
  std::int64_t sustainSeconds = 0;            ///< How long is long enough.
  std::vector<std::string> asking;            ///< Other programs that ask to stay awake.
  /// The same programs' own words, where they have any.
  std::vector<tidewell::AskingProgram> askingWords;
  tidewell::PowerState power{};
  /// Whether the program serves the whole machine, and no session. Whoever asks knows it, so it
  /// does not cross with the rest.
  bool servesMachine = false;

  /// Whether the machine is kept awake, as far as the services tell.
  [[nodiscard]] bool isHeld() const { return !services.empty(); }
  /// Whether it should be.
  [[nodiscard]] bool wantsHold() const {
    return state == State::holding || state == State::winding;
  }

  /// Whether somebody who follows the changes need not be told of `later` after this one. Figures,
  /// a countdown and the order of the same names are no change.
  [[nodiscard]] bool saysTheSameAs(const StatusReport& later) const;

  /// The whole report for people, line by line. `now` is the time at which it was made.
  [[nodiscard]] std::vector<std::string> lines(tidewell::WallTime now) const;
  /// The same in one line, as for a change.
  [[nodiscard]] std::string line() const;
  /// The whole report as a JSON object on one line.
  [[nodiscard]] std::string json(tidewell::WallTime now) const;
};

/// The state as programs read it: "holding", "winding", "blocked", "idle" or "paused".
[[nodiscard]] std::string_view nameOf(StatusReport::State state);
/// The state of that name.
[[nodiscard]] std::optional<StatusReport::State> stateNamed(std::string_view name);

}  // namespace staylit
