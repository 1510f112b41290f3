#pragma once

#include "Tidewell/Ports/Console.h"

namespace platform {

/// Writes to the standard streams through the C library.
class PosixConsole : public tidewell::Console {
 public:
  void printLine(std::string_view line) override;
  void writeError(std::string_view text) override;
  bool hasLostOutput() override { return outputError_ != 0; }
  bool outputIsTerminal() override;
  bool errorIsTerminal() override;

  /// The first errno with which a line was lost, other than to a reader that has gone; else 0.
  [[nodiscard]] int outputError() const { return outputError_; }

 private:
  int outputError_ = 0;
};

}  // namespace platform
