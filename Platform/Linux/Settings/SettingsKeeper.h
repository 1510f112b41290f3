#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Linux/Loop/ThreadQueue.h"
#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// The settings of a file. Reading and setting them never waits long for the disk.
///
/// A thread of its own does all work on the file, one piece at a time. A new value counts at once,
/// and the file follows. Values that are set in quick succession are written together, always with
/// the last one. The keeper itself belongs to one thread.
class SettingsKeeper {
 public:
  using Milliseconds = std::chrono::milliseconds;

  struct Timing {
    /// The longest wait for the first look, before which nothing is known.
    Milliseconds arrival{5000};
    /// The longest wait for a look at the file. After it, the values of the last look count.
    Milliseconds patience{30};
    Milliseconds freshness{10};   ///< For so long the last look counts as a new one.
    Milliseconds pause{300};      ///< From one write to the next.
    Milliseconds settling{2000};  ///< For so long a file that is not whole may be half-written.
    Milliseconds retrying{5000};  ///< From a failure to save to the next attempt.
    /// The longest wait at the program's end until everything is written.
    Milliseconds farewell{5000};
  };

  SettingsKeeper(std::filesystem::path file, Timing timing);
  /// Does the same as `finish`. A thread that the disk keeps waiting is left behind.
  ~SettingsKeeper();
  SettingsKeeper(const SettingsKeeper&) = delete;
  SettingsKeeper& operator=(const SettingsKeeper&) = delete;

  /// The value that was set, or else the file's value; absent where there is neither.
  std::optional<tidewell::PropertyValue> value(std::string_view key);
  void set(std::string_view key, tidewell::PropertyValue value);

  /// Waits until everything that was set is in the file, for `farewell` at most, and not at all
  /// when the file cannot be written. What is not written by then goes to the log.
  void finish();

 private:
  struct State;
  using Lock = std::unique_lock<std::mutex>;

  enum class Look { recent, now };
  void look(Lock& lock, Look kind);
  void start(Lock& lock);
  bool waitForSaving(Lock& lock);
  void sayComplaints(Lock& lock);

  const Timing timing_;
  std::shared_ptr<State> state_;
  /// The thread has its owner's priority, because its owner waits for it.
  ThreadQueue queue_{"staylit-settings", ThreadQueue::Descriptors::own,
                     ThreadQueue::Priority::owners};
};

}  // namespace platform
