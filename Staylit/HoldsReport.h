#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Tidewell/Ports/Clock.h"

namespace staylit {

/// All that keeps this machine from sleeping, whoever holds it, and why the machine would or would
/// not go to sleep now. A value, made once by a command that reports and ends.
struct HoldsReport {
  /// Of the JSON form. Grows when a member goes or means something else; not when one is added.
  static constexpr std::int64_t kJsonVersion = 1;

  /// What a hold keeps off.
  enum class Effect {
    idleSleep,   ///< The sleep of a machine that nobody uses.
    everySleep,  ///< That which somebody asks for as well.
    lidSleep,    ///< That which closing the lid brings.
    idleness,    ///< That the session counts as unused, and with it all that follows.
  };

  /// What the owner's process does, with all that it has started.
  struct Activity {
    enum class State {
      unknown,
      gone,      ///< There is no such process any more.
      quiet,     ///< None of them ran while they were watched.
      active,    ///< They ran.
      passesOn,  ///< It holds for others, of whom the service does not tell.
    };
    State state = State::unknown;
    /// Of one core, while they were watched; means something when active.
    double cpuPercent = 0;
    /// How long they have been quiet; absent where the system does not tell.
    std::optional<tidewell::Seconds> quietFor;
  };

  struct Hold {
    std::string service;  ///< That keeps it, by its name on the bus.
    std::string owner;    ///< What the owner calls itself; may be empty.
    std::string reason;   ///< What the owner said; may be empty.
    Effect effect = Effect::idleSleep;
    std::string user;  ///< Empty where the service does not tell.
    std::optional<std::int64_t> processIdentifier;
    std::string program;  ///< Of the process; empty where it cannot be seen.
    std::optional<tidewell::WallTime> since;
    Activity activity;
    /// What the Staylit that runs sees the owner's application do; empty where it sees no work.
    std::string staylitSees;
  };

  /// Somebody who puts the machine to sleep when nobody uses it.
  struct Decider {
    enum class Action { nothing, sleeps, unknown };
    std::string name;
    Action action = Action::unknown;
    std::optional<tidewell::Seconds> after;
    std::string setting;             ///< What says so; may be empty.
    std::vector<std::string> heeds;  ///< Services whose holds it heeds.
    /// Whether a hold of Staylit's keeps it off without a service.
    bool isKeptOff = false;
  };

  enum class Verdict { sleeps, held, never, unknown };

  std::vector<Hold> holds;
  std::vector<Decider> deciders;
  /// Whether the machine can sleep at all; absent where nobody says.
  std::optional<bool> canSleep;
  /// The services that are there and were asked.
  std::vector<std::string> services;
  /// Those of them that did not tell what they have.
  std::vector<std::string> silent;

  /// Whether the machine would go to sleep now, once nobody uses it.
  [[nodiscard]] Verdict verdict() const;
  /// The same in one sentence, with the reason.
  [[nodiscard]] std::string summary() const;

  /// The whole report for people, line by line. `now` is the time at which it was made.
  [[nodiscard]] std::vector<std::string> lines(tidewell::WallTime now) const;
  /// The whole report as a JSON object on one line.
  [[nodiscard]] std::string json(tidewell::WallTime now) const;
};

}  // namespace staylit
