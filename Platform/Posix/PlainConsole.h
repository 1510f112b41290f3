#pragma once

#include <string>
#include <string_view>

#include "Tidewell/Ports/Console.h"

namespace platform {

/// `text` with nothing but ASCII in it: dashes, dots and quotation marks that look alike take the
/// place of those that ASCII lacks, and a question mark that of any other character.
[[nodiscard]] std::string inAscii(std::string_view text);

/// A console for a terminal whose locale has no more than ASCII. `console` must outlive it.
class PlainConsole : public tidewell::Console {
 public:
  explicit PlainConsole(tidewell::Console& console) : console_(console) {}

  void printLine(std::string_view line) override { console_.printLine(inAscii(line)); }
  void writeError(std::string_view text) override { console_.writeError(inAscii(text)); }
  bool outputIsTerminal() override { return console_.outputIsTerminal(); }
  bool errorIsTerminal() override { return console_.errorIsTerminal(); }
  bool hasLostOutput() override { return console_.hasLostOutput(); }

 private:
  tidewell::Console& console_;
};

}  // namespace platform
