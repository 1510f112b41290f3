#pragma once

#include <functional>
#include <memory>
#include <string>

namespace tidewell {

/// Runs submitted work in order, one piece at a time, off the caller's thread.
///
/// Owned by its one user. Its destructor drops work that has not begun, and may or may not wait for
/// work that is under way. So work may refer to its submitter only weakly.
class SerialQueue {
 public:
  virtual ~SerialQueue() = default;

  /// Returns at once; callable from any thread.
  virtual void async(std::function<void()> work) = 0;
};

/// Makes serial queues of utility quality of service.
class SerialQueues {
 public:
  virtual ~SerialQueues() = default;
  virtual std::unique_ptr<SerialQueue> make(const std::string& label) = 0;
};

}  // namespace tidewell
