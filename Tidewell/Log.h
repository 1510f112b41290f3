#pragma once

#include <string>

namespace tidewell {

/// Writes finished messages to the system's log, under one subsystem and the category "core".
///
/// Messages are literal and public, because they carry names that must stay readable. Any thread
/// may log. Call `setSubsystem` and `setVerbose` on the main thread while no other thread logs.
/// Nothing here fails, and nothing is logged where no ports are installed.
class Log {
 public:
  Log() = delete;

  static std::string subsystem();
  /// Counts for every later message.
  static void setSubsystem(const std::string& subsystem);

  /// Whether `diag` also writes to standard output. Off at first.
  static bool verbose();
  static void setVerbose(bool verbose);

  static void info(const std::string& message);
  static void error(const std::string& message);
  /// As `info`; while `verbose` is on, also writes the message and a line feed to standard output.
  static void diag(const std::string& message);
};

}  // namespace tidewell
