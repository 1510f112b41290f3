#pragma once

#include <systemd/sd-event.h>

#include <csignal>
#include <functional>
#include <memory>
#include <vector>

#include "Platform/Linux/Loop/EventSource.h"
#include "Platform/Posix/Files/Descriptor.h"
#include "Tidewell/Ports/MainLoop.h"

namespace platform {

/// The main thread's loop, on sd-event.
///
/// Everything happens on the thread that made the loop. The loop either runs by itself (`run`) or
/// is driven by another loop (`pump`), never both at once. The constructor ends the process with a
/// message when the kernel gives no descriptors. Destroying the loop drops posted work that has not
/// run yet.
class EventLoop : public tidewell::MainLoop {
 public:
  EventLoop();
  ~EventLoop() override;
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;

  std::unique_ptr<tidewell::RepeatingTimer> scheduleRepeating(
      tidewell::Seconds interval, std::function<void()> action) override;
  void async(std::function<void()> work) override;

  /// Runs until `stop` is called, and returns the status that `stop` got. If `stop` was called
  /// before, it returns at once. It may be called again.
  int run();
  void stop(int status = 0);
  [[nodiscard]] bool isStopping() const { return stopping_; }
  /// Makes `run` return after the action that calls this, so that another loop can drive this one
  /// from then on. A `stop` stays pending meanwhile.
  void handOver();

  /// Whether one of the loop's own actions is running.
  [[nodiscard]] bool isDispatching() const;

  /// Runs `action` on SIGTERM, SIGINT and SIGHUP. Until the loop is destroyed, these signals do not
  /// end the process.
  ///
  /// Blocks the three signals in the calling thread, and so in every thread that this thread starts
  /// later: call it before any other thread exists. A started program would inherit the mask and
  /// could not be terminated, so clear the mask when you start one (POSIX_SPAWN_SETSIGMASK).
  void watchTerminationSignals(std::function<void()> action);

  /// The event object, to which sources can be added. The loop owns it.
  [[nodiscard]] sd_event* handle() const { return event_; }

  /// Readable when there is something for `pump` to do.
  [[nodiscard]] int descriptor() const;
  /// To be called by a foreign loop. Handles what is ready without waiting, and arms the descriptor
  /// again. Does nothing when an action of this loop calls it.
  void pump();
  /// Makes a foreign loop call `pump` soon. Call it after changes that no descriptor shows.
  void wake();

 private:
  static int runPosted(sd_event_source* source, int descriptor, unsigned events, void* data);
  void pumpOnce();
  static int terminate(sd_event_source* source, const struct signalfd_siginfo* info, void* data);

  sd_event* event_ = nullptr;
  Descriptor wakeUp_;
  EventSource wakeUpSource_;
  std::vector<std::function<void()>> posted_;
  std::vector<EventSource> signals_;
  std::function<void()> onTermination_;
  sigset_t formerMask_{};
  bool stopping_ = false;
  bool handingOver_ = false;
  int status_ = 0;
};

}  // namespace platform
