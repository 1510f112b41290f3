#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Tidewell/Ports/SerialQueue.h"

namespace platform {

/// A serial queue on a thread of its own, which starts with the first piece of work.
///
/// The thread has the first 15 bytes of the label as its name, all signals blocked, and a slightly
/// lower priority unless `Priority::owners` is given. When no thread can be started, `async` runs
/// the work itself, because a short delay is better than waiting for work that never runs.
///
/// Destroying the queue drops the work that has not begun, and waits for the work that is running.
/// It does not wait when that work itself destroys the queue, or after `abandon`; the thread then
/// ends after that work.
class ThreadQueue : public tidewell::SerialQueue {
 public:
  /// Whether the thread shares the process's descriptors, or has its own and the standard ones. A
  /// thread that the kernel may block for long should have its own, because shared descriptors stay
  /// open until the thread is free again, even after the process was killed.
  enum class Descriptors { shared, own };

  /// `owners` is for a thread for which its owner waits.
  enum class Priority { lower, owners };

  explicit ThreadQueue(std::string label, Descriptors descriptors = Descriptors::shared,
                       Priority priority = Priority::lower);
  ~ThreadQueue() override;
  ThreadQueue(const ThreadQueue&) = delete;
  ThreadQueue& operator=(const ThreadQueue&) = delete;

  void async(std::function<void()> work) override;

  /// Leaves the thread alone, whatever it is doing. Do not use the queue afterwards.
  void abandon() { isAbandoned_ = true; }

 private:
  struct State;
  static void* runThread(void* argument);
  bool startThread();

  std::shared_ptr<State> state_;
  bool isAbandoned_ = false;
};

}  // namespace platform
