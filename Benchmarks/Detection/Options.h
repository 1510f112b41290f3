#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Tidewell/Ports/Clock.h"

/// What the command line asks for.
struct Options {
  tidewell::Seconds baseline{7};  ///< From the start of the engines to that of the workload.
  tidewell::Seconds work{60};     ///< The workload is ended then if it has not ended by itself.
  /// How long to wait at most for both engines to let go. Absent: the grace period and 10 s.
  std::optional<tidewell::Seconds> after;
  std::optional<std::int64_t> graceSeconds;  ///< Absent: the default.
  std::vector<std::string> ignored;  ///< Application keys that belong to the measurement itself.
  std::vector<std::string> command;  ///< The workload and its arguments; not empty.

  static constexpr const char* kUsage =
      "detection [--baseline S] [--work S] [--after S] [--grace S] [--ignore KEY]... -- COMMAND...";

  /// Absent when the command line cannot be understood.
  static std::optional<Options> parse(const std::vector<std::string>& arguments);
};
