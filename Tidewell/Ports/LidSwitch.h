#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tidewell {

/// A switch of the system by which a process can forbid the sleep that closing the lid brings. The
/// hold ends with the process. Main thread only; no call waits for the user.
class LidSwitch {
 public:
  struct Failure {
    bool wasDeclined = false;  ///< By the user, who then needs no message about it.
    std::string description;   ///< For people to read.
    /// Whether this process goes on trying, until it succeeds or `release` is called. Observers are
    /// told when it succeeds.
    bool isTriedAgain = false;
  };
  /// Absent on success.
  using Answer = std::function<void(std::optional<Failure>)>;

  virtual ~LidSwitch() = default;

  /// Holds the switch and asks the user nothing. Succeeds when the switch is held already. Absent
  /// on success.
  virtual std::optional<Failure> hold() = 0;

  /// As `hold`, but the system may ask the user. `answer` is called once: before this function
  /// returns where nobody is asked, else from the main loop when the user has answered. It is never
  /// called when the switch is released, or asked for again, before the user has answered.
  virtual void holdAsking(Answer answer) = 0;

  /// As `hold`, for a switch that an earlier process held: where the system does not answer, this
  /// process goes on trying.
  virtual std::optional<Failure> resume() = 0;

  /// Succeeds when the switch is not held. Absent on success.
  virtual std::optional<Failure> release() = 0;

  /// Why the last attempt to hold the switch failed, for people to read; empty where it did not, or
  /// where the user knows, having declined.
  virtual std::string lastFailure() { return {}; }

  /// Whether this process holds the switch.
  virtual bool holds() = 0;

  /// Whether this process goes on trying to hold the switch. `release` ends that.
  virtual bool isTriedAgain() = 0;

  /// Whether anything on the system keeps a closed lid from putting the machine to sleep.
  virtual bool isHeld() = 0;

  /// The main loop calls `changed` when the hold is lost, when a lost hold is back, and when a hold
  /// that was tried again succeeds. The calls end when the result is dropped.
  [[nodiscard]] virtual std::shared_ptr<void> observe(std::function<void(bool holds)> changed) = 0;
};

}  // namespace tidewell
