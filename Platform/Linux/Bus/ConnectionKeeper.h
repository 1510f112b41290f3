#pragma once

#include <systemd/sd-bus.h>

#include <cerrno>
#include <cstdint>
#include <memory>
#include <vector>

#include "Platform/Linux/Bus/Backoff.h"
#include "Platform/Linux/Bus/BusHandles.h"
#include "Platform/Linux/Bus/BusTiming.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Tidewell/WeakReference.h"

namespace platform {

/// Makes the connection to a bus, and makes it again after a loss.
///
/// The connection is opened at the address that libsystemd finds in the environment. After a
/// failure nothing is tried until a pause is over, which grows with each failure. Only while the
/// owner is listening does the keeper connect by itself. `Bus` owns it; main thread only.
class ConnectionKeeper {
 public:
  enum class Kind {
    system,
    session,
    none,  ///< A bus that is not there. No attempt at a connection is made.
  };

  /// The owner of a keeper. None of these functions may destroy the keeper.
  class Owner {
   public:
    /// The connection can be used from now on.
    virtual void connected(sd_bus* bus) = 0;
    /// The connection, or the attempt at one, was given up. `wasReady` tells whether `connected`
    /// had been called for it.
    virtual void disconnected(bool wasReady) = 0;
    /// Gets every message before its handlers do. True keeps the message from the handlers.
    virtual bool arrived(sd_bus_message* message) = 0;
    /// Whether the connection is wanted although nobody uses it at the moment.
    virtual bool isListening() = 0;

   protected:
    virtual ~Owner() = default;
  };

  /// `loop`, `timing` and `owner` must outlive the keeper.
  ConnectionKeeper(EventLoop& loop, Kind kind, const BusTiming& timing, Owner& owner);
  ConnectionKeeper(const ConnectionKeeper&) = delete;
  ConnectionKeeper& operator=(const ConnectionKeeper&) = delete;

  /// Connects unless there is a connection already, and waits until `deadline` at most: 0, or a
  /// negative errno.
  int connectBefore(BusTiming::Deadline deadline);

  /// The connection; null while there is none.
  [[nodiscard]] sd_bus* handle() const { return isReady_ ? connection_.get() : nullptr; }
  /// The number of the connection; 0 while there is none.
  [[nodiscard]] std::uint64_t number() const { return isReady_ ? number_ : 0; }

  /// Gives up the connection or the attempt at one, and begins a pause.
  void lost(int error);

  /// The error of the last failure while its pause lasts, else 0.
  [[nodiscard]] int remembered() const { return backoff_.remembered(timing_.now()); }
  /// The bus did not answer a call, so a pause begins. The connection stays.
  void failedToAnswer() { backoff_.failed(-ETIMEDOUT, timing_.now()); }
  /// The bus works, so the pause ends.
  void answered() { backoff_.succeeded(); }

  /// Tries again after the pause, if one lasts and the owner began to listen during it.
  void listeningBegan();

 private:
  int open();
  int waitUntilReady(BusTiming::Deadline deadline);
  void becameReady();
  void scheduleRetry();
  void retry();

  static int probed(sd_bus_message* reply, void* data, sd_bus_error* error);
  static int closed(sd_bus_message* message, void* data, sd_bus_error* error);
  static int filter(sd_bus_message* message, void* data, sd_bus_error* error);

  EventLoop& loop_;
  Kind kind_;
  const BusTiming& timing_;
  Owner& owner_;
  Backoff backoff_;

  BusConnection connection_;
  /// Connections that were given up but may still be on the call stack. The loop destroys them.
  std::vector<BusConnection> retired_;
  BusSlot probe_;
  BusSlot closed_;
  BusSlot filter_;
  bool isReady_ = false;
  std::uint64_t number_ = 0;
  std::unique_ptr<tidewell::RepeatingTimer> timer_;
  tidewell::WeakReferenceSource<ConnectionKeeper> self_{*this};  ///< For work that is posted.
};

}  // namespace platform
