#pragma once

#include <string_view>

namespace tidewell {

/// The standard streams of the process. Main thread only. What is written to a closed stream is
/// lost without an error.
class Console {
 public:
  virtual ~Console() = default;

  /// Writes `line` and a line feed to standard output, at once.
  virtual void printLine(std::string_view line) = 0;

  /// Writes `text` as it is to standard error, at once.
  virtual void writeError(std::string_view text) = 0;

  /// Whether a line for standard output could not be written, as to a full disk.
  virtual bool hasLostOutput() { return false; }

  virtual bool outputIsTerminal() = 0;
  virtual bool errorIsTerminal() = 0;
};

}  // namespace tidewell
