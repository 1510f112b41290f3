#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Tidewell/Ports/SerialQueue.h"

namespace platform {

/// A serial queue on a thread of its own, which begins with the first piece of work.
///
/// The thread is named after the label (its first 15 bytes), runs at a slightly lower priority,
/// unless it is to have its owner's, and has every signal blocked. Where no thread can be had, work
/// runs in `async` itself: a moment's delay is better than work that its submitter waits for and
/// that never comes.
///
/// Destroying the queue drops what has not begun and waits for what is under way; destroyed by a
/// piece of its own work, or after `abandon`, it does not wait, and the thread ends after that
/// piece.
class ThreadQueue : public tidewell::SerialQueue {
 public:
  /// Whether the thread sees the process's descriptors, or has only its own and the standard ones.
  /// A thread that may be stuck in the kernel for long should have its own: whatever it shares
  /// stays open until it is free again, even when the process was killed.
  enum class Descriptors { shared, own };

  /// A thread that somebody waits for should have its owner's priority.
  enum class Priority { lower, owners };

  explicit ThreadQueue(std::string label, Descriptors descriptors = Descriptors::shared,
                       Priority priority = Priority::lower);
  ~ThreadQueue() override;
  ThreadQueue(const ThreadQueue&) = delete;
  ThreadQueue& operator=(const ThreadQueue&) = delete;

  void async(std::function<void()> work) override;

  /// Lets the thread go, whatever it is doing. The queue is good for nothing afterwards.
  void abandon() { isAbandoned_ = true; }

 private:
  struct State;
  static void* runThread(void* argument);
  bool startThread();

  std::shared_ptr<State> state_;
  bool isAbandoned_ = false;
};

}  // namespace platform
