#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Tidewell/Ports/Clock.h"

namespace tidewell {

/// What an assertion keeps the machine from doing while nobody uses it.
enum class AssertionKind {
  /// Going to sleep; the screen may go blank.
  system,
  /// Blanking the screen.
  display,
};

/// Creates, names and releases the platform's assertions that keep the machine awake.
///
/// Main thread only. An assertion lives until it is released or this process ends in any way; it
/// never outlives the process.
class PowerManagement {
 public:
  /// On success `code` is 0 and `id` is not 0. Otherwise `code` is the platform's result code (on
  /// Linux a negative errno).
  struct Creation {
    std::int32_t code = 0;
    std::uint32_t id = 0;
  };

  virtual ~PowerManagement() = default;

  /// `name` is the reason that the system shows to people.
  virtual Creation createAssertion(AssertionKind kind, const std::string& name) = 0;

  /// Renames a live assertion, without a gap in the hold.
  virtual void setAssertionName(std::uint32_t id, const std::string& name) = 0;

  virtual void releaseAssertion(std::uint32_t id) = 0;

  /// Whether the system really keeps the machine awake for every live assertion of the kind
  /// `system`, as far as that is known. Asks the system nothing.
  virtual bool isGranted() = 0;

  /// Why nothing keeps the machine awake although an assertion was asked for, as far as that is
  /// known; for people. Empty where it is not known. Asks the system nothing.
  virtual std::string whyNotGranted() { return {}; }

  /// A service that keeps an assertion.
  struct Grant {
    std::string service;  ///< The service's name; on Linux its name on the bus.
    /// When the service's own list last had the grant; absent when that was never seen.
    std::optional<Moment> seenAt;
  };
  /// An assertion that was created and not yet released.
  struct LiveAssertion {
    AssertionKind kind = AssertionKind::system;
    std::string name;
    std::vector<Grant> grants;  ///< Empty where nobody keeps it.
  };
  /// All live assertions, the oldest first. Asks the system nothing.
  virtual std::vector<LiveAssertion> liveAssertions() = 0;
};

}  // namespace tidewell
