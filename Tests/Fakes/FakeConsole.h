#pragma once

#include <string>
#include <string_view>

#include "Tidewell/Ports/Console.h"

namespace tidewell {

/// Keeps what is written to the two streams.
class FakeConsole : public Console {
 public:
  void printLine(std::string_view line) override {
    output += line;
    output += '\n';
    both += line;
    both += '\n';
  }
  void writeError(std::string_view text) override {
    error += text;
    both += text;
  }
  bool hasLostOutput() override { return outputLost; }
  bool outputIsTerminal() override { return outputTerminal; }
  bool errorIsTerminal() override { return errorTerminal; }

  std::string output;
  std::string error;
  std::string both;  ///< What a terminal gets when both streams go to it.
  bool outputLost = false;
  bool outputTerminal = false;
  bool errorTerminal = false;
};

}  // namespace tidewell
