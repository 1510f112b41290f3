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
/// A second thread does all work on the file. A new value counts at once, before it is in the file.
/// Values that are set in quick succession are written together; of several values for one key, the
/// last is written. The keeper itself belongs to one thread.
class SettingsKeeper {
 public:
  using Milliseconds = std::chrono::milliseconds;

  struct Timing {
    /// The longest wait for the first reading of the file. Before it nothing is known.
    Milliseconds firstReadTimeout{5000};
    /// The longest wait for a later reading. When it is over, the values of the last one count.
    Milliseconds readTimeout{30};
    /// A reading that is not older than this counts as the present one.
    Milliseconds freshFor{10};
    /// The pause from one write to the next.
    Milliseconds writePause{300};
    /// A file that is not whole may be half-written, until it has not changed for this time.
    Milliseconds settlingTime{2000};
    /// The pause from a failed attempt to save to the next one.
    Milliseconds retryPause{5000};
    /// The longest wait at the program's end until everything is written.
    Milliseconds finishTimeout{5000};
  };

  SettingsKeeper(std::filesystem::path file, Timing timing);
  /// Does the same as `finish`. A second thread that still waits for the disk is left behind.
  ~SettingsKeeper();
  SettingsKeeper(const SettingsKeeper&) = delete;
  SettingsKeeper& operator=(const SettingsKeeper&) = delete;

  /// The value that was set, or else the file's value; absent when there is neither.
  std::optional<tidewell::PropertyValue> value(std::string_view key);
  void set(std::string_view key, tidewell::PropertyValue value);

  /// Why what was set last could not be saved, as the last attempt found; empty while nothing is
  /// wrong.
  std::string savingProblem();

  /// The text of the file when somebody else has changed it since the last call, as the last look
  /// found it. Does not look by itself.
  std::optional<std::string> takeForeignText();

  /// Waits until everything that was set is in the file, for `finishTimeout` at most. Does not wait
  /// when the file cannot be written. The log tells when values were not written in time.
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
  /// The thread has the priority of its owner, who waits for it.
  ThreadQueue queue_{"staylit-settings", ThreadQueue::Descriptors::own,
                     ThreadQueue::Priority::owners};
};

}  // namespace platform
