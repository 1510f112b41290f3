#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tidewell {

/// The system's own way to let a process forbid the sleep that closing the lid brings, where there
/// is one: the hold ends with the process. Main thread only; nothing waits for the user.
class LidSwitch {
 public:
  struct Failure {
    bool wasDeclined = false;  ///< By the user, so nothing is to be said about it.
    std::string description;   ///< For people to read.
    bool isTriedAgain =
        false;  ///< Until it succeeds or is released; observers hear of the outcome.
  };
  /// Absent on success.
  using Answer = std::function<void(std::optional<Failure>)>;

  virtual ~LidSwitch() = default;

  /// Holds it, and asks the user nothing. Holding what is held already succeeds. Absent on success.
  virtual std::optional<Failure> hold() = 0;

  /// As `hold`, but the system may ask the user, who then is to be at the machine. `answer` runs
  /// once: before this returns where nobody is asked, else from the main loop, when the user has
  /// answered. It does not run at all when the hold is released, or asked for again, before that.
  virtual void holdAsking(Answer answer) = 0;

  /// As `hold`, for a hold that an earlier process had: goes on trying where the system does not
  /// answer.
  virtual std::optional<Failure> resume() = 0;

  /// Releasing what is not held succeeds. Absent on success.
  virtual std::optional<Failure> release() = 0;

  /// Whether this process holds it.
  virtual bool holds() = 0;
  /// Whether this process goes on trying to hold it; a `release` ends that.
  virtual bool isTriedAgain() = 0;
  /// Whether anything on the system keeps a closed lid from putting it to sleep.
  virtual bool isHeld() = 0;

  /// `changed` is told, from the main loop, when the hold was lost, and when one that was lost or
  /// that is tried again was had; until the result is dropped.
  [[nodiscard]] virtual std::shared_ptr<void> observe(std::function<void(bool holds)> changed) = 0;
};

}  // namespace tidewell
