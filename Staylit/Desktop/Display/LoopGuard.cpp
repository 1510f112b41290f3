#include "Staylit/Desktop/Display/LoopGuard.h"

#include <pthread.h>

#include <csignal>
#include <cstdlib>
#include <utility>

#include "Tidewell/Log.h"

namespace staylit {
namespace {

void endProcess() {
  tidewell::Log::error("the display has stopped answering: Staylit ends, and its hold with it");
  std::_Exit(EXIT_FAILURE);
}

/// Whether somebody has asked the process to end and the loop has not yet seen the signal.
bool isAskedToEnd() {
  sigset_t pending;
  sigemptyset(&pending);
  sigpending(&pending);
  return sigismember(&pending, SIGTERM) == 1 || sigismember(&pending, SIGINT) == 1 ||
         sigismember(&pending, SIGHUP) == 1;
}

/// Blocks all signals in the threads that are started while it lives, because signals belong to the
/// loop.
class NoSignals {
 public:
  NoSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &former_);
  }
  ~NoSignals() { pthread_sigmask(SIG_SETMASK, &former_, nullptr); }
  NoSignals(const NoSignals&) = delete;
  NoSignals& operator=(const NoSignals&) = delete;

 private:
  sigset_t former_{};
};

}  // namespace

LoopGuard::LoopGuard(platform::EventLoop& loop) : LoopGuard(loop, {}, endProcess) {}

LoopGuard::LoopGuard(platform::EventLoop& loop, Patience patience, std::function<void()> lost)
    : patience_(patience), lost_(std::move(lost)) {
  const tidewell::Seconds beat = std::chrono::duration<double>(patience_.look) / 2;
  timer_ = loop.scheduleRepeating(beat, [this] { ++beats_; });
  timer_->setTolerance(beat / 4);
  const NoSignals blocked;
  thread_ = std::thread([this] { watch(); });
}

LoopGuard::~LoopGuard() {
  {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
  }
  ending_.notify_one();
  thread_.join();
}

bool LoopGuard::waitForNextLook() {
  std::unique_lock lock(mutex_);
  return !ending_.wait_for(lock, patience_.look, [this] { return isEnding_; });
}

void LoopGuard::watch() {
  unsigned seen = beats_;
  int still = 0;
  while (waitForNextLook()) {
    const unsigned now = beats_;
    still = now == std::exchange(seen, now) ? still + 1 : 0;
    if (still < (isAskedToEnd() ? patience_.looksWhenAskedToEnd : patience_.looks)) continue;
    return lost_();
  }
}

}  // namespace staylit
