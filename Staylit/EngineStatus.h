#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace staylit {

/// The outcome of the engine's last decision. Two are equal when their cases and payloads are.
struct EngineStatus {
  /// Work is going on and the machine is held awake; the names are those of what works.
  struct Holding {
    std::vector<std::string> names;
    friend bool operator==(const Holding&, const Holding&) = default;
  };
  /// Work stopped, and the hold continues until the grace period ends, in so many seconds.
  struct Winding {
    std::int64_t secondsLeft;
    friend bool operator==(const Winding&, const Winding&) = default;
  };
  /// The power policy forbids a hold, for this reason.
  struct Blocked {
    std::string reason;
    std::string shownReason;  ///< The same in the language of the user.
    friend bool operator==(const Blocked& left, const Blocked& right) {
      return left.reason == right.reason;
    }
  };
  /// Nothing to do; the machine may sleep.
  struct Idle {
    friend bool operator==(const Idle&, const Idle&) = default;
  };
  /// The user paused the engine.
  struct Paused {
    friend bool operator==(const Paused&, const Paused&) = default;
  };

  std::variant<Holding, Winding, Blocked, Idle, Paused> value;

  static EngineStatus holding(std::vector<std::string> names) {
    return {Holding{std::move(names)}};
  }
  static EngineStatus winding(std::int64_t secondsLeft) { return {Winding{secondsLeft}}; }
  static EngineStatus blocked(const std::string& reason) { return blocked(reason, reason); }
  static EngineStatus blocked(std::string reason, std::string shownReason) {
    return {Blocked{std::move(reason), std::move(shownReason)}};
  }
  static EngineStatus idle() { return {Idle{}}; }
  static EngineStatus paused() { return {Paused{}}; }

  /// The case as programs read it: "holding", "winding", "blocked", "idle" or "paused".
  [[nodiscard]] std::string_view name() const;
  /// The status in one line for people: "Awake for Xcode +2 more". In the source's English, for
  /// terminals and other programs.
  [[nodiscard]] std::string summary() const;
  /// The same in the language of the user.
  [[nodiscard]] std::string shownSummary() const;

  /// Whether `other` tells people nothing new: equal but for a countdown and the order of names.
  [[nodiscard]] bool isSameState(const EngineStatus& other) const;

  friend bool operator==(const EngineStatus&, const EngineStatus&) = default;
};

}  // namespace staylit
