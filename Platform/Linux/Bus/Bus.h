#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Linux/Bus/Backoff.h"
#include "Platform/Linux/Bus/BusHandles.h"
#include "Platform/Linux/Bus/BusListener.h"
#include "Platform/Linux/Bus/BusNames.h"
#include "Platform/Linux/Bus/BusTiming.h"
#include "Platform/Linux/Bus/BusTrust.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Tidewell/WeakReference.h"

namespace platform {

class NameWatch;

/// The outcome of a call: true with the reply, or false with a negative errno. When the other side
/// refused the call, it also has the D-Bus name of the error.
struct BusReply {
  int error = 0;
  std::string errorName;
  BusMessage message;

  explicit operator bool() const { return error >= 0 && message; }
};

/// The program's one connection to the system bus or to the session bus.
///
/// The first use opens it, at the address that libsystemd finds in the environment. No call blocks
/// its caller for longer than the timing's limits, whatever state the bus and the other side are
/// in. After a call or a connection failed for want of an answer, the next calls fail at once, with
/// the same error, until the answer comes after all or a growing pause is over. If the failed call
/// may have started its service, this holds only for calls to that service. A lost connection is
/// made again at the next use after the pause; while somebody listens, it is made again without any
/// use.
///
/// `BusTrust` says whom the program believes, and who may call the objects that the program offers.
///
/// Callbacks come only from the loop, never from inside a call. Main thread only. The bus must
/// outlive its listeners' use, and none of its callbacks may destroy it.
class Bus {
 public:
  enum class Kind { system, session };
  /// Appends the arguments to a call. A negative errno gives the call up.
  using Arguments = std::function<int(sd_bus_message*)>;
  /// Gets the reply of a call for which its caller no longer waits.
  using LateReply = std::function<void(BusMessage)>;
  using ReplyHandler = std::function<void(BusReply)>;

  /// `loop` must outlive the bus.
  Bus(EventLoop& loop, Kind kind, BusTiming timing = {});
  ~Bus();
  Bus(const Bus&) = delete;
  Bus& operator=(const Bus&) = delete;

  /// Connects unless there is a connection already: 0, or a negative errno.
  int connect();
  /// The connection, on which objects can be served; null while there is none. Do not keep it.
  [[nodiscard]] sd_bus* handle() const { return isReady_ ? connection_.get() : nullptr; }
  /// The number of the connection. A unique name of one connection means nobody on another. Never 0
  /// while connected.
  [[nodiscard]] std::uint64_t connectionNumber() const { return isReady_ ? number_ : 0; }

  /// Calls a method and waits for the reply. If this fails with -ETIMEDOUT and the reply comes
  /// later, `late` gets the reply, so that what it grants is not lost.
  BusReply call(const BusMethod& method, const Arguments& arguments = {}, LateReply late = {});

  /// Calls a method and does not wait. `handler` gets the outcome after 25 s at the latest, or
  /// later where the user may be asked. It is not called when the connection is lost before.
  /// Dropping the result gives the call up. The result is empty while there is no connection.
  [[nodiscard]] BusSlot callAsync(const BusMethod& method, const Arguments& arguments,
                                  ReplyHandler handler);

  /// Calls a method and wants no reply. It does not wait even for a bus that hangs. Returns 0, or a
  /// negative errno when there is no connection.
  int send(const BusMethod& method, const Arguments& arguments = {});

  /// 1 when `name` has an owner, 0 when it has none, else a negative errno. Makes no call for a
  /// name that is watched.
  int nameHasOwner(const std::string& name);

  /// Tells whether `name` has an owner: once when this is first known, then at every change. An
  /// owner that another one replaces, and a connection that is lost, count as a loss.
  [[nodiscard]] BusListening watchName(std::string name, std::function<void(bool owned)> callback);
  /// Calls back for each such signal that comes from the owner of the sender's name.
  [[nodiscard]] BusListening subscribe(BusSignal signal,
                                       std::function<void(sd_bus_message*)> callback);
  [[nodiscard]] BusListening watchConnection(std::function<void(bool connected)> callback);

 private:
  /// A call for which nobody waits any more, but whose reply may still come.
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
  /// The owners of the names from which the subscribed signals are to come.
  std::map<std::string, std::weak_ptr<NameWatch>> ownerWatches_;
  BusTrust trust_;
  unsigned arrivals_ = 0;

  BusConnection connection_;
  /// Connections that are given up, but may still be on the call stack. The loop destroys them.
  std::vector<BusConnection> retired_;
  BusSlot probe_;
  BusSlot closed_;
  BusSlot filter_;
  bool isReady_ = false;
  std::uint64_t number_ = 0;
  std::unique_ptr<tidewell::RepeatingTimer> timer_;
  tidewell::WeakReferences<Bus> self_{*this};  ///< For work that is posted.
};

/// The two connections that everything in the program shares.
struct Buses {
  /// `loop` must outlive them.
  explicit Buses(EventLoop& loop)
      : system(loop, Bus::Kind::system), session(loop, Bus::Kind::session) {}

  Bus system;
  Bus session;
};

}  // namespace platform
