#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Tidewell/Ports/SerialQueue.h"

namespace platform {

/// A serial queue on a thread of its own, which begins with the first piece of work.
///
/// The thread is named after the label (its first 15 bytes), runs at a slightly lower priority and
/// has every signal blocked. Where no thread can be had, work runs in `async` itself: a moment's
/// delay is better than work that its submitter waits for and that never comes.
///
/// Destroying the queue drops what has not begun and waits for what is under way; destroyed by a
/// piece of its own work, it does not wait, and the thread ends after that piece.
class ThreadQueue : public tidewell::SerialQueue {
 public:
  explicit ThreadQueue(std::string label);
  ~ThreadQueue() override;
  ThreadQueue(const ThreadQueue&) = delete;
  ThreadQueue& operator=(const ThreadQueue&) = delete;

  void async(std::function<void()> work) override;

 private:
  struct State;
  static void* runThread(void* argument);
  bool startThread();

  std::shared_ptr<State> state_;
};

}  // namespace platform
