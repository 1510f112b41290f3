#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Tidewell/Ports/SerialQueue.h"

namespace platform {

/// A serial queue on a thread of its own, which starts with the first piece of work.
///
/// The thread is named after the label (its first 15 bytes), has every signal blocked, and runs at
/// a slightly lower priority unless it is to have its owner's. Where no thread can be started,
/// `async` runs the work itself: a short delay is better than work that never comes and for which
/// its submitter waits.
///
/// Destroying the queue drops the work that has not begun and waits for the piece that is running.
/// When that piece destroys the queue, or after `abandon`, the queue does not wait, and the thread
/// ends after that piece.
class ThreadQueue : public tidewell::SerialQueue {
 public:
  /// Whether the thread sees the process's descriptors, or only its own and the standard ones. A
  /// thread that the kernel may block for long should have its own: all that it shares stays open
  /// until the thread is free again, even when the process was killed.
  enum class Descriptors { shared, own };

  /// A thread that somebody waits for should have its owner's priority.
  enum class Priority { lower, owners };

  explicit ThreadQueue(std::string label, Descriptors descriptors = Descriptors::shared,
                       Priority priority = Priority::lower);
  ~ThreadQueue() override;
  ThreadQueue(const ThreadQueue&) = delete;
  ThreadQueue& operator=(const ThreadQueue&) = delete;

  void async(std::function<void()> work) override;

  /// Lets the thread go, whatever it is doing. The queue is of no use afterwards.
  void abandon() { isAbandoned_ = true; }

 private:
  struct State;
  static void* runThread(void* argument);
  bool startThread();

  std::shared_ptr<State> state_;
  bool isAbandoned_ = false;
};

}  // namespace platform
