#pragma once

#include <sys/types.h>
#include <systemd/sd-bus.h>

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <utility>

namespace platform {

/// Whom the program believes on a bus; the one place that says so.
///
/// A bus writes into every message who sent it, and lets nobody give another's name. But it hands
/// over any signal that somebody addresses to the program, and sd-bus then takes it for one that
/// was asked for: a well-known name in a match fits every sender. So all that arrives passes
/// `refuses` before any handler sees it, and `SignalSubscription` believes the present owner of the
/// name alone, of which only the bus itself may tell (`NameWatch`).
///
/// Calls are taken from the program's own user only, and on the system bus, where the program
/// offers nothing, from nobody. A session bus lets no other user in by default. This is for one
/// that does. The flag that sd-bus has for this in its tables asks the bus about each call anew,
/// for as long as 25 s.
///
/// Belongs to one connection. Main thread only.
class BusTrust {
 public:
  enum class Calls { ofOwnUser, ofNobody };

  explicit BusTrust(Calls calls) : calls_(calls) {}

  /// Whether the bus itself sent `message`, or libsystemd in its place, as for a call that timed
  /// out.
  [[nodiscard]] static bool isFromBus(sd_bus_message* message);
  /// Whether `reply` may be an answer of `destination`, or of the bus in its place. Buses keep
  /// track of calls and hand over no other reply; what the bus itself is asked is looked at again.
  [[nodiscard]] static bool mayBeReplyOf(const std::string& destination, sd_bus_message* reply);

  /// Whether `message` is as if it had never come. A refused call has been answered with
  /// AccessDenied. Waits for the bus, a second at most, when a caller is new.
  bool refuses(sd_bus_message* message);

  /// For a new connection: names mean somebody else there.
  void forget();

 private:
  /// More than a session has panels; a further caller costs a question again.
  static constexpr std::size_t kMostCallers = 64;

  bool mayCall(sd_bus_message* call);
  [[nodiscard]] std::optional<bool> remembered(const std::string& caller) const;

  Calls calls_;
  std::optional<uid_t> ownUser_;  ///< As the bus knows it.
  std::deque<std::pair<std::string, bool>> callers_;
};

}  // namespace platform
