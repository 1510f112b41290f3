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

/// Decides whom the program believes on a bus, and who may call the program.
///
/// The bus writes the sender's unique name into every message, so no program can pass for another.
/// But the bus also delivers every signal that some program addresses to this one. For sd-bus, a
/// match with a well-known name fits every sender, so it takes such a signal for one that was asked
/// for. Therefore every message passes `refuses` before its handlers get it, `SignalSubscription`
/// believes only the present owner of a name, and only the bus itself may tell who the owner is
/// (`NameWatch`).
///
/// On a session bus the program takes calls only from its own user. On the system bus, where it
/// offers nothing, it takes calls from nobody; only the program that serves the whole machine
/// offers what everybody may read there. Most session buses let no other user in; this class is for
/// those that do. sd-bus has a flag for this purpose in its tables. But with the flag it asks the
/// bus about each call anew, and waits for the answer for up to 25 s.
///
/// `Bus` owns it. Main thread only.
class BusTrust {
 public:
  enum class Calls { ofOwnUser, ofNobody, ofEverybody };

  BusTrust(Calls calls, const BusTiming& timing);

  /// Whether the bus itself sent `message`. Messages count too that libsystemd makes in the bus's
  /// name, such as the error of a call that timed out.
  [[nodiscard]] static bool isFromBus(sd_bus_message* message);
  /// Whether `reply` may come from `destination`, or from the bus in its place. The sender is
  /// compared when the destination is the bus or a unique name. Otherwise the bus is trusted to
  /// deliver only replies to calls that were made.
  [[nodiscard]] static bool mayBeReplyOf(const std::string& destination, sd_bus_message* reply);

  /// Whether `message` must not reach its handlers. Answers a refused call with AccessDenied. For a
  /// new caller, this asks the bus up to two questions and waits for a second at most. After the
  /// bus failed to answer, new callers are refused without a question for a while.
  bool refuses(sd_bus_message* message);

  /// To be called when a connection was made. Asks the bus for the program's own user and does not
  /// wait.
  void connected(sd_bus* bus);
  /// To be called when the connection is gone, because on another one the unique names belong to
  /// others.
  void forget();

 private:
  /// How many callers are remembered: more than a session has panels. A forgotten caller costs one
  /// more question.
  static constexpr std::size_t kMostCallers = 64;

  static int ownUserTold(sd_bus_message* reply, void* data, sd_bus_error* error);
  bool mayCall(sd_bus_message* call);
  /// Asks the bus for the user behind a unique name.
  std::optional<uid_t> userOf(sd_bus* bus, const char* name);
  [[nodiscard]] std::optional<bool> remembered(const std::string& caller) const;

  Calls calls_;
  std::function<BusTiming::Point()> now_;
  Backoff unanswered_;
  BusSlot question_;
  std::optional<uid_t> ownUser_;  ///< The number by which the bus knows the program's user.
  std::deque<std::pair<std::string, bool>> callers_;
};

}  // namespace platform
