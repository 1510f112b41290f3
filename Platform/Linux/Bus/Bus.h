#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Linux/Bus/Backoff.h"
#include "Platform/Linux/Bus/BusConnection.h"
#include "Platform/Linux/Bus/BusListener.h"
#include "Platform/Linux/Bus/BusMethod.h"
#include "Platform/Linux/Bus/BusReply.h"
#include "Platform/Linux/Bus/BusSignal.h"
#include "Platform/Linux/Bus/BusSlot.h"
#include "Platform/Linux/Bus/BusTiming.h"
#include "Platform/Linux/Bus/BusTrust.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Tidewell/WeakReference.h"

namespace platform {

class NameWatch;

/// The program's one connection to the system bus or to the session bus.
///
/// Opened at the first use, at the address that libsystemd finds in the environment. No call blocks
/// its caller for longer than the timing's limits, whatever state the bus and the other side are
/// in, and after a call or a connection failed for want of an answer the next ones fail at once,
/// with the same error, until the answer comes after all or a growing pause is over; where the call
/// may have started its service, only the next ones to that service do. A lost connection is made
/// again at the next use after the pause, and without any use while somebody listens.
///
/// Whom it believes, and who may call what the program offers on it, is said by `BusTrust`.
///
/// Callbacks come from the loop only, never from inside a call. Main thread only. Must outlive its
/// listeners' use and must not be destroyed by one of its callbacks.
class Bus {
 public:
  enum class Kind { system, session };
  /// Appends the arguments to a call; a negative errno gives the call up.
  using Arguments = std::function<int(sd_bus_message*)>;
  /// Gets the reply of a call that its caller no longer waits for.
  using LateReply = std::function<void(BusMessage)>;
  using ReplyHandler = std::function<void(BusReply)>;

  /// `loop` must outlive the bus.
  Bus(EventLoop& loop, Kind kind, BusTiming timing = {});
  ~Bus();
  Bus(const Bus&) = delete;
  Bus& operator=(const Bus&) = delete;

  /// Makes sure of a connection: 0, or a negative errno.
  int connect();
  /// The connection, for serving objects on it; null while there is none. Not to be kept.
  [[nodiscard]] sd_bus* handle() const { return isReady_ ? connection_.get() : nullptr; }
  /// Tells connections apart: a unique name means nobody on another one. Never 0 while connected.
  [[nodiscard]] std::uint64_t connectionNumber() const { return isReady_ ? number_ : 0; }

  /// Calls a method and waits for the reply. Should the reply come after this has failed with
  /// -ETIMEDOUT, `late` gets it, so that what it grants is not lost.
  BusReply call(const BusMethod& method, const Arguments& arguments = {}, LateReply late = {});

  /// Calls a method and does not wait; `handler` hears what became of it, after 25 s at the latest
  /// unless the user may be asked, and not when the connection is lost before. Dropping the result
  /// gives the call up. Empty while there is no connection.
  [[nodiscard]] BusSlot callAsync(const BusMethod& method, const Arguments& arguments,
                                  ReplyHandler handler);

  /// Calls a method and wants no reply. Costs no wait even of a bus that hangs; 0, or a negative
  /// errno when there is no connection.
  int send(const BusMethod& method, const Arguments& arguments = {});

  /// 1 when `name` has an owner, 0 when it has none, else a negative errno. Costs no call for a
  /// name that is watched.
  int nameHasOwner(const std::string& name);

  /// Tells who owns `name`: once when it is first known, then at every change. An owner that is
  /// replaced by another, and a connection that is lost, count as a loss.
  [[nodiscard]] BusListening watchName(std::string name, std::function<void(bool owned)> callback);
  /// Calls back for each such signal of whoever owns the sender's name when the signal is sent.
  [[nodiscard]] BusListening subscribe(BusSignal signal,
                                       std::function<void(sd_bus_message*)> callback);
  [[nodiscard]] BusListening watchConnection(std::function<void(bool connected)> callback);

 private:
  /// A call that nobody waits for any more, whose reply may yet come.
  struct Unanswered {
    std::string destination;
    LateReply late;
  };

  int connectBefore(BusTiming::Deadline deadline);
  int open();
  int waitUntilReady(BusTiming::Deadline deadline);
  void becameReady();
  /// Gives up the connection or the attempt at one, and begins a pause.
  void lost(int error);
  void failedToAnswer(const BusMethod& method);
  void answered(const std::string& destination);
  [[nodiscard]] int remembered(const BusMethod& method) const;
  BusReply exchange(sd_bus_message* message, const BusMethod& method, BusTiming::Deadline deadline,
                    LateReply late);
  BusReply prepare(const BusMethod& method, const Arguments& arguments);
  BusListening listen(BusListening listener);
  void arrived();
  std::shared_ptr<NameWatch> ownerWatch(const std::string& name);
  std::vector<BusListening> listeners();
  void scheduleRetry();
  void retry();

  static int probed(sd_bus_message* reply, void* data, sd_bus_error* error);
  static int closed(sd_bus_message* message, void* data, sd_bus_error* error);
  static int filter(sd_bus_message* message, void* data, sd_bus_error* error);

  EventLoop& loop_;
  Kind kind_;
  BusTiming timing_;
  Backoff backoff_;
  std::map<std::string, Backoff, std::less<>> peers_;
  std::vector<std::weak_ptr<BusListener>> listeners_;
  std::map<std::uint64_t, Unanswered> late_;
  /// Who may send the signals that are subscribed to, by the names that these are to come from.
  std::map<std::string, std::weak_ptr<NameWatch>> ownerWatches_;
  BusTrust trust_;
  unsigned arrivals_ = 0;

  BusConnection connection_;
  /// Given up, but perhaps still on the call stack; swept from the loop.
  std::vector<BusConnection> retired_;
  BusSlot probe_;
  BusSlot closed_;
  BusSlot filter_;
  bool isReady_ = false;
  std::uint64_t number_ = 0;
  std::unique_ptr<tidewell::RepeatingTimer> timer_;
  tidewell::WeakReferences<Bus> self_{*this};  ///< For work that is posted.
};

}  // namespace platform
