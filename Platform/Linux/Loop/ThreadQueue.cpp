#include "Platform/Linux/Loop/ThreadQueue.h"

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <condition_variable>
#include <csignal>
#include <cstddef>
#include <deque>
#include <mutex>
#include <utility>

namespace platform {
namespace {

#if defined(__SANITIZE_THREAD__)
/// The thread sanitizer knows only one table of descriptors. It takes equal numbers in two tables
/// for the same descriptor and reports a race.
constexpr bool kMayHaveItsOwnDescriptors = false;
#else
constexpr bool kMayHaveItsOwnDescriptors = true;
#endif

constexpr std::size_t kStackBytes = std::size_t{256} << 10;
constexpr std::size_t kThreadNameLength = 15;
constexpr int kNiceness = 5;

/// Blocks all signals as long as it exists. A thread that is started meanwhile inherits that.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &former_);
  }
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &former_, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t former_{};
};

}  // namespace

/// The queue and its thread own it together, because either may end first.
struct ThreadQueue::State {
  State(std::string queueLabel, Descriptors whose, Priority which)
      : label(std::move(queueLabel)), descriptors(whose), priority(which) {}

  const std::string label;
  const Descriptors descriptors;
  const Priority priority;
  std::mutex lock;  ///< Guards what follows, except `thread`, which is for the queue's owner only.
  std::condition_variable changed;
  std::deque<std::function<void()>> pending;
  bool hasThread = false;
  bool stopping = false;
  pthread_t thread{};

  void workUntilStopped();
};

ThreadQueue::ThreadQueue(std::string label, Descriptors descriptors, Priority priority)
    : state_(std::make_shared<State>(std::move(label), descriptors, priority)) {}

ThreadQueue::~ThreadQueue() {
  std::deque<std::function<void()>> dropped;
  bool hasThread = false;
  {
    const std::lock_guard guard(state_->lock);
    state_->stopping = true;
    dropped.swap(state_->pending);
    hasThread = state_->hasThread;
  }
  dropped.clear();
  state_->changed.notify_one();
  if (!hasThread) return;
  if (isAbandoned_ || pthread_equal(pthread_self(), state_->thread)) {
    pthread_detach(state_->thread);
  } else {
    pthread_join(state_->thread, nullptr);
  }
}

void ThreadQueue::async(std::function<void()> work) {
  // When the lock is free, the work may run and destroy the queue, so the state is kept here.
  const std::shared_ptr<State> state = state_;
  std::unique_lock lock(state->lock);
  const bool hasThread = state->hasThread || startThread();
  if (!hasThread) {
    lock.unlock();
    return work();
  }
  state->pending.push_back(std::move(work));
  lock.unlock();
  // The lock must be free, or else the thread wakes only to wait for the lock.
  state->changed.notify_one();
}

bool ThreadQueue::startThread() {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kStackBytes);
  auto argument = std::make_unique<std::shared_ptr<State>>(state_);
  {
    const SignalsBlocked blocked;
    state_->hasThread =
        pthread_create(&state_->thread, &attributes, &ThreadQueue::runThread, argument.get()) == 0;
  }
  pthread_attr_destroy(&attributes);
  if (state_->hasThread) static_cast<void>(argument.release());
  return state_->hasThread;
}

void* ThreadQueue::runThread(void* argument) {
  const std::unique_ptr<std::shared_ptr<State>> state(
      static_cast<std::shared_ptr<State>*>(argument));
  // On an old kernel this fails, and the descriptors stay shared.
  if (kMayHaveItsOwnDescriptors && (*state)->descriptors == Descriptors::own)
    close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_UNSHARE);
  pthread_setname_np(pthread_self(), (*state)->label.substr(0, kThreadNameLength).c_str());
  // On Linux this identifier means one thread, not the process.
  const auto self = static_cast<id_t>(gettid());
  if ((*state)->priority == Priority::lower)
    setpriority(PRIO_PROCESS, self, getpriority(PRIO_PROCESS, self) + kNiceness);
  (*state)->workUntilStopped();
  return nullptr;
}

void ThreadQueue::State::workUntilStopped() {
  std::unique_lock guard(lock);
  for (;;) {
    changed.wait(guard, [this] { return stopping || !pending.empty(); });
    if (stopping) return;
    std::function<void()> work = std::move(pending.front());
    pending.pop_front();
    guard.unlock();
    work();
    work = nullptr;  // Destroying the work may destroy the queue, which takes the lock.
    guard.lock();
  }
}

}  // namespace platform
