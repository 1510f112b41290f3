#pragma once

#include "Tidewell/Ports/Console.h"

namespace platform {

/// Writes to the standard streams through the C library.
class PosixConsole : public tidewell::Console {
 public:
  void printLine(std::string_view line) override;
  void writeError(std::string_view text) override;
  bool outputIsTerminal() override;
  bool errorIsTerminal() override;
};

}  // namespace platform
