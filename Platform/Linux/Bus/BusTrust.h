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
#include "Platform/Linux/Bus/BusSlot.h"
#include "Platform/Linux/Bus/BusTiming.h"

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

  BusTrust(Calls calls, const BusTiming& timing);

  /// Whether the bus itself sent `message`, or libsystemd in its place, as for a call that timed
  /// out.
  [[nodiscard]] static bool isFromBus(sd_bus_message* message);
  /// Whether `reply` may be an answer of `destination`, or of the bus in its place. Buses keep
  /// track of calls and hand over no other reply; what the bus itself is asked is looked at again.
  [[nodiscard]] static bool mayBeReplyOf(const std::string& destination, sd_bus_message* reply);

  /// Whether `message` is as if it had never come. A refused call has been answered with
  /// AccessDenied. Waits for the bus, a second at most, when a caller is new. While a bus that did
  /// not answer is let alone, all new callers are refused without asking.
  bool refuses(sd_bus_message* message);

  /// A connection stands: asks for the program's own user, and does not wait.
  void connected(sd_bus* bus);
  /// The connection is gone: names mean somebody else on the next one.
  void forget();

 private:
  /// More than a session has panels; a further caller costs a question again.
  static constexpr std::size_t kMostCallers = 64;

  static int ownUserTold(sd_bus_message* reply, void* data, sd_bus_error* error);
  bool mayCall(sd_bus_message* call);
  /// The user behind a unique name, by the bus's word.
  std::optional<uid_t> userOf(sd_bus* bus, const char* name);
  [[nodiscard]] std::optional<bool> remembered(const std::string& caller) const;

  Calls calls_;
  std::function<BusTiming::Point()> now_;
  Backoff unanswered_;
  BusSlot question_;
  std::optional<uid_t> ownUser_;  ///< As the bus knows it.
  std::deque<std::pair<std::string, bool>> callers_;
};

}  // namespace platform
