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
#include "Platform/Linux/Bus/ConnectionKeeper.h"
#include "Platform/Linux/Loop/EventLoop.h"

namespace platform {

class NameWatch;

/// The outcome of a call: either the reply, or a negative errno. When the other side refused the
/// call, there is also the D-Bus name of the error.
struct BusReply {
  int error = 0;
  std::string errorName;
  BusMessage message;

  explicit operator bool() const { return error >= 0 && message; }
};

/// Whether a name on a bus has an owner.
struct NameStatus {
  enum class State { unknown, free, owned };

  State state = State::unknown;
  int error = 0;  ///< Why the state is unknown: a negative errno.

  [[nodiscard]] bool isOwned() const { return state == State::owned; }
};

/// The program's one connection to the system bus or to the session bus.
///
/// The first use connects. No call blocks its caller for longer than the timing's limits, whatever
/// state the bus and the other side are in. When a call or a connection fails because no answer
/// comes, the next calls fail at once, with the same error. This ends when the answer comes after
/// all, or when a growing pause is over. If the failed call may have started its service, only
/// calls to that service fail. After a loss, the first use after the pause connects again. While
/// somebody listens, the bus connects again by itself (`ConnectionKeeper`).
///
/// `BusTrust` decides whom the program believes, and who may call the objects that it offers.
///
/// Callbacks come only from the loop, never from inside a call. Main thread only. The bus must
/// outlive the use of its listeners, and no callback may destroy the bus.
class Bus : private ConnectionKeeper::Owner {
 public:
  using Kind = ConnectionKeeper::Kind;
  /// Appends the arguments to a call. A negative errno cancels the call.
  using Arguments = std::function<int(sd_bus_message*)>;
  /// Gets the reply of a call when its caller no longer waits.
  using LateReply = std::function<void(BusMessage)>;
  using ReplyHandler = std::function<void(BusReply)>;

  /// `loop` must outlive the bus.
  Bus(EventLoop& loop, Kind kind, BusTiming timing = {});
  /// Does the same, and says who may call what the program offers there. Otherwise that is the own
  /// user on a session bus, and nobody on the system bus.
  Bus(EventLoop& loop, Kind kind, BusTrust::Calls calls, BusTiming timing = {});
  ~Bus() override;
  Bus(const Bus&) = delete;
  Bus& operator=(const Bus&) = delete;

  /// Connects unless there is a connection already: 0, or a negative errno.
  int connect();
  /// The connection, on which objects can be served; null while there is none. Do not keep it.
  [[nodiscard]] sd_bus* handle() const { return keeper_.handle(); }
  /// The number of the connection. A unique name of one connection means nobody on another. Never 0
  /// while connected.
  [[nodiscard]] std::uint64_t connectionNumber() const { return keeper_.number(); }

  /// Calls a method and waits for the reply. If this fails with -ETIMEDOUT and the reply comes
  /// later, `late` gets the reply, so that what it grants is not lost.
  BusReply call(const BusMethod& method, const Arguments& arguments = {}, LateReply late = {});

  /// Calls a method and does not wait. `handler` gets the outcome after 25 s at the latest, or
  /// later where the user may be asked. When the connection is lost before, `handler` is not
  /// called. Dropping the result cancels the call. The result is empty while there is no
  /// connection.
  [[nodiscard]] BusSlot callAsync(const BusMethod& method, const Arguments& arguments,
                                  ReplyHandler handler);

  /// Calls a method without a reply. Does not wait, even for a bus that hangs. Returns 0, or a
  /// negative errno when there is no connection.
  int send(const BusMethod& method, const Arguments& arguments = {});

  /// Whether `name` has an owner. Makes no call for a name that is watched.
  NameStatus nameStatus(const std::string& name);

  /// Tells whether `name` has an owner: once when this is first known, then at every change. An
  /// owner that another one replaces, and a connection that is lost, count as a loss.
  [[nodiscard]] BusListening watchName(std::string name, std::function<void(bool owned)> callback);
  /// Calls back for each signal of this kind that the owner of the sender's name sends.
  [[nodiscard]] BusListening subscribe(BusSignal signal,
                                       std::function<void(sd_bus_message*)> callback);
  /// Calls back when a connection is made or lost.
  [[nodiscard]] BusListening watchConnection(std::function<void(bool connected)> callback);

 private:
  /// A call for which nobody waits any more, but whose reply may still come.
  struct Unanswered {
    std::string destination;
    LateReply late;
  };

  void connected(sd_bus* bus) override;
  void disconnected(bool wasReady) override;
  bool arrived(sd_bus_message* message) override;
  bool isListening() override { return !listeners().empty(); }

  void awaitLateReply(sd_bus_message* message, Unanswered call);
  bool takesLateReply(sd_bus_message* message);
  void failedToAnswer(const BusMethod& method);
  void answered(const std::string& destination);
  [[nodiscard]] int remembered(const BusMethod& method) const;
  BusReply exchange(sd_bus_message* message, const BusMethod& method, BusTiming::Deadline deadline,
                    LateReply late);
  [[nodiscard]] BusReply prepare(const BusMethod& method, const Arguments& arguments) const;
  BusListening listen(BusListening listener);
  std::shared_ptr<NameWatch> ownerWatch(const std::string& name);
  std::vector<BusListening> listeners();

  EventLoop& loop_;
  BusTiming timing_;
  std::map<std::string, Backoff, std::less<>> peers_;
  std::vector<std::weak_ptr<BusListener>> listeners_;
  std::map<std::uint64_t, Unanswered> unanswered_;  ///< By the cookies of the calls.
  /// The owners of the names from which the subscribed signals are to come.
  std::map<std::string, std::weak_ptr<NameWatch>> ownerWatches_;
  BusTrust trust_;
  unsigned arrivals_ = 0;
  ConnectionKeeper keeper_;
};

/// The two buses that all parts of the program share.
struct Buses {
  /// Whom the program serves: a session, or everybody on the machine. Then there is no session bus,
  /// and everybody may call what the program offers on the system bus.
  enum class Serving { session, machine };

  /// `loop` must outlive them.
  explicit Buses(EventLoop& loop, Serving serving = Serving::session);

  Bus system;
  Bus session;
};

}  // namespace platform
