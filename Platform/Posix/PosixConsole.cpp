#include "Platform/Posix/PosixConsole.h"

#include <unistd.h>

#include <cstdio>

namespace platform {

void PosixConsole::printLine(std::string_view line) {
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fputc('\n', stdout);
  std::fflush(stdout);
}

void PosixConsole::writeError(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fflush(stderr);
}

bool PosixConsole::outputIsTerminal() {
  return isatty(STDOUT_FILENO) == 1;
}

bool PosixConsole::errorIsTerminal() {
  return isatty(STDERR_FILENO) == 1;
}

}  // namespace platform
