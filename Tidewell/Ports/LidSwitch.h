#pragma once

#include <optional>
#include <string>

namespace tidewell {

/// The system's own way to let a process forbid the sleep that closing the lid brings, where there
/// is one: the hold ends with the process. Main thread only; blocks until the user has answered if
/// the system asks for approval.
class LidSwitch {
 public:
  /// Whether the system may ask the user, who then is to be at the machine, or only refuse.
  enum class Approval { mayBeAsked, mustBeGiven };

  struct Failure {
    bool wasDeclined = false;  ///< By the user, so nothing is to be said about it.
    std::string description;   ///< For people to read.
  };

  virtual ~LidSwitch() = default;
  /// Holding what is held already succeeds. Absent on success.
  virtual std::optional<Failure> hold(Approval approval) = 0;
  /// Releasing what is not held succeeds. Absent on success.
  virtual std::optional<Failure> release() = 0;
  /// Whether anything on the system keeps a closed lid from putting it to sleep.
  virtual bool isHeld() = 0;
};

}  // namespace tidewell
