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
#include "Platform/Linux/Processes/TrackedProcess.h"
#include "Tidewell/Ports/Text.h"
#include "Tidewell/SharedText.h"

namespace platform {

/// Reads single processes: once in full when they are new, and as little as possible whenever they
/// have run. Main thread only; the arguments must outlive it.
class ProcessReader {
 public:
  /// The process with an identifier, if it is known; null else.
  using Lookup = std::function<const TrackedProcess*(std::int32_t pid)>;

  ProcessReader(ProcFileSystem& proc, ApplicationResolver& applications, tidewell::Text& text,
                Lookup known);

  /// How many processes may keep their files open, two each.
  void setMostKeptOpen(std::size_t processes) { mostKeptOpen_ = processes; }

  /// Reads everything but the CPU time. False when there is no such process any more.
  bool readAll(TrackedProcess& process);

  /// Reads what changes when a process runs: its I/O, the time of the children that it has reaped
  /// if it reaps or `mayReap`, and its name if that has changed. False when the process is gone.
  bool readAfterRun(TrackedProcess& process, bool mayReap);

  /// Closes the files of a process that has not run for some passes.
  void noteQuiet(TrackedProcess& process);

  /// Closes its files; to be called before a process is dropped.
  void forget(TrackedProcess& process);

  std::optional<ProcStat> stat(std::int32_t pid);

  /// Notes that a process has children, so that it is read as one that reaps from now on.
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
  Lookup known_;
  tidewell::SharedTexts paths_;
  std::size_t mostKeptOpen_ = 128;
  std::size_t keptOpen_ = 0;
};

}  // namespace platform
