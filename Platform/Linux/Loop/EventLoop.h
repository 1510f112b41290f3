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
/// Everything happens on the thread that made it. It runs either by itself (`run`) or driven by
/// another loop (`pump`), never both at once. Ends the process with a message when the kernel has
/// no descriptors left for it. Work that was posted and has not run is dropped with the loop.
class EventLoop : public tidewell::MainLoop {
 public:
  EventLoop();
  ~EventLoop() override;
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;

  std::unique_ptr<tidewell::RepeatingTimer> scheduleRepeating(
      tidewell::Seconds interval, std::function<void()> action) override;
  void async(std::function<void()> work) override;

  /// Runs until `stop`, whose status it returns; may be called again afterwards. A `stop` that came
  /// before makes it return at once.
  int run();
  void stop(int status = 0);
  [[nodiscard]] bool isStopping() const { return stopping_; }
  /// Makes `run` return after the action that calls this, for another loop to drive this one from
  /// then on. A `stop` stays pending meanwhile.
  void handOver();

  /// Whether one of the loop's own actions is under way.
  [[nodiscard]] bool isDispatching() const;

  /// Runs `action` on SIGTERM, SIGINT and SIGHUP instead of dying of them, until the loop is
  /// destroyed.
  ///
  /// Blocks the three in the calling thread and thereby in every thread that it starts later: call
  /// it before any other thread exists. Programs inherit the mask as well, so whoever starts one
  /// must clear it (POSIX_SPAWN_SETSIGMASK), or the program cannot be terminated.
  void watchTerminationSignals(std::function<void()> action);

  /// For adding sources. Owned by the loop.
  [[nodiscard]] sd_event* handle() const { return event_; }

  /// Readable when there is something to `pump`.
  [[nodiscard]] int descriptor() const;
  /// For a foreign loop: handles what is ready without waiting and arms the descriptor again. Does
  /// nothing when called from within one of the loop's own actions.
  void pump();
  /// Makes a foreign loop call `pump` soon. Needed after changes that no descriptor tells of.
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
