#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Linux/Proc/ProcFileSystem.h"
#include "Platform/Linux/Proc/ProcStat.h"
#include "Platform/Linux/Processes/ApplicationResolver.h"
#include "Platform/Linux/Processes/ControlGroups.h"
#include "Platform/Linux/Processes/TrackedProcess.h"
#include "Tidewell/Ports/Text.h"
#include "Tidewell/SharedText.h"

namespace platform {

/// Reads single processes: everything of a new process, and as little as possible of a process that
/// has run. Main thread only; the constructor's arguments must outlive the reader.
class ProcessReader {
 public:
  /// Finds a known process by its identifier; null when there is none.
  using Lookup = std::function<const TrackedProcess*(std::int32_t pid)>;

  ProcessReader(ProcFileSystem& proc, ApplicationResolver& applications, tidewell::Text& text,
                ControlGroups& groups, Lookup known);

  /// Limits for how many processes files are kept open, two for each.
  void setMostKeptOpen(std::size_t processes) { mostKeptOpen_ = processes; }

  /// Reads everything but the CPU time. False when there is no such process any more.
  bool readAll(TrackedProcess& process);

  /// Reads what changes when a process runs: its I/O, the CPU time of the children that it has
  /// reaped (if it is known to have children, or `mayReap`), and everything if its program has
  /// changed. False when the process is gone.
  bool readAfterRun(TrackedProcess& process, bool mayReap);

  /// Notes a pass in which the process did not run. After some such passes its files are closed.
  void noteQuiet(TrackedProcess& process);

  /// Closes the files of a process. Call this before the process is dropped.
  void forget(TrackedProcess& process);

  std::optional<ProcStat> stat(std::int32_t pid);

  /// Reads the control group of a process anew.
  void readGroup(TrackedProcess& process);

  /// Notes that a process has children. From now on `readAfterRun` reads the time of those that it
  /// has reaped.
  static void noteChildren(TrackedProcess& process);

 private:
  bool readProgram(TrackedProcess& process, const ProcStat& stat);
  bool readIo(TrackedProcess& process);
  std::string readPath(const TrackedProcess& process, const std::string& program);
  void readApplication(TrackedProcess& process, const ProcStat& stat, std::string_view program);
  bool programChanged(TrackedProcess& process, bool mayReap);
  bool commIsSame(TrackedProcess& process);
  bool readStatAfterRun(TrackedProcess& process);
  void openNameFile(TrackedProcess& process);
  static void takeReaped(TrackedProcess& process, const ProcStat& stat);
  void keepOpen(TrackedProcess& process);

  ProcFileSystem& proc_;
  ApplicationResolver& applications_;
  tidewell::Text& text_;
  ControlGroups& groups_;
  Lookup known_;
  tidewell::SharedTexts paths_;
  std::size_t mostKeptOpen_ = 128;
  std::size_t keptOpen_ = 0;
};

}  // namespace platform
