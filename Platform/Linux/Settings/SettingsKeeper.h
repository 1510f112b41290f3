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

/// The settings of a file, read and set without ever waiting for the disk.
///
/// All work on the file is done by a thread of its own, one piece at a time. A value that is set
/// counts at once; the file follows. Values that follow each other closely are written together,
/// the last one always. The keeper itself belongs to one thread.
class SettingsKeeper {
 public:
  using Milliseconds = std::chrono::milliseconds;

  struct Timing {
    Milliseconds arrival{5000};   ///< For the first look, before which nothing is known.
    Milliseconds patience{30};    ///< For a look at the file; then what was last seen counts.
    Milliseconds freshness{10};   ///< For so long what was seen is as good as a new look.
    Milliseconds pause{300};      ///< From one write to the next.
    Milliseconds settling{2000};  ///< For how long a file that is not whole may be half-written.
    Milliseconds retrying{5000};  ///< From a failure to save to the next attempt.
    Milliseconds farewell{5000};  ///< For everything to be written when the program ends.
  };

  SettingsKeeper(std::filesystem::path file, Timing timing);
  /// As `finish`. A thread that the disk keeps waiting is left behind.
  ~SettingsKeeper();
  SettingsKeeper(const SettingsKeeper&) = delete;
  SettingsKeeper& operator=(const SettingsKeeper&) = delete;

  /// What was set, else what the file says; absent where neither says anything.
  std::optional<tidewell::PropertyValue> value(std::string_view key);
  void set(std::string_view key, tidewell::PropertyValue value);

  /// Waits until everything that was set is in the file: `farewell` at most, and not when the file
  /// cannot be written. What is not written by then goes to the log.
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
  /// Somebody waits for this thread, so it is as quick as they are.
  ThreadQueue queue_{"staylit-settings", ThreadQueue::Descriptors::own,
                     ThreadQueue::Priority::owners};
};

}  // namespace platform
