#pragma once

#include <sys/types.h>
#include <systemd/sd-bus.h>

#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "Platform/Linux/Bus/Backoff.h"
#include "Platform/Linux/Bus/BusHandles.h"
#include "Platform/Linux/Bus/BusTiming.h"

namespace platform {

/// Whom the program believes on a bus. This is the one place that says so.
///
/// A bus writes its sender into every message, and nobody can use another's name. But the bus also
/// delivers any signal that somebody addresses to the program, and sd-bus then takes the signal for
/// one that was asked for, because a well-known name in a match fits every sender. So every message
/// that arrives passes `refuses` before any handler sees it. `SignalSubscription` believes only the
/// present owner of the name, and only the bus itself may tell who that is (`NameWatch`).
///
/// The program takes calls only from its own user. On the system bus, where it offers nothing, it
/// takes calls from nobody. A session bus lets no other user in by default; this class is for a bus
/// that does. The flag that sd-bus has for this purpose in its tables asks the bus about each call
/// anew, for as long as 25 s.
///
/// Belongs to one connection. Main thread only.
class BusTrust {
 public:
  enum class Calls { ofOwnUser, ofNobody };

  BusTrust(Calls calls, const BusTiming& timing);

  /// Whether `message` comes from the bus itself, or from libsystemd in its place, as for a call
  /// that timed out.
  [[nodiscard]] static bool isFromBus(sd_bus_message* message);
  /// Whether `reply` may be an answer of `destination`, or of the bus in its place. Buses keep
  /// track of calls and deliver no other reply. Only answers of the bus itself are checked once
  /// more.
  [[nodiscard]] static bool mayBeReplyOf(const std::string& destination, sd_bus_message* reply);

  /// Whether `message` must be treated as if it had never come. A refused call is answered with
  /// AccessDenied first. When a caller is new, this waits for the bus, a second at most (two
  /// questions). After the bus has not answered, all new callers are refused for a while without
  /// asking.
  bool refuses(sd_bus_message* message);

  /// A connection is there: asks for the program's own user, and does not wait.
  void connected(sd_bus* bus);
  /// The connection is gone: on the next one, names mean somebody else.
  void forget();

 private:
  /// A session has fewer panels than this. A further caller costs one more question.
  static constexpr std::size_t kMostCallers = 64;

  static int ownUserTold(sd_bus_message* reply, void* data, sd_bus_error* error);
  bool mayCall(sd_bus_message* call);
  /// The user behind a unique name, as the bus tells it.
  std::optional<uid_t> userOf(sd_bus* bus, const char* name);
  [[nodiscard]] std::optional<bool> remembered(const std::string& caller) const;

  Calls calls_;
  std::function<BusTiming::Point()> now_;
  Backoff unanswered_;
  BusSlot question_;
  std::optional<uid_t> ownUser_;  ///< The number by which the bus knows the user.
  std::deque<std::pair<std::string, bool>> callers_;
};

}  // namespace platform
