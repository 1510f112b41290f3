#include "Platform/Posix/PosixConsole.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace platform {

void PosixConsole::printLine(std::string_view line) {
  const bool isWritten = std::fwrite(line.data(), 1, line.size(), stdout) == line.size() &&
                         std::fputc('\n', stdout) != EOF && std::fflush(stdout) == 0;
  // A reader that has gone has all that it wanted, as in `staylit --status | head -n 1`.
  if (!isWritten && errno != EPIPE && outputError_ == 0) outputError_ = errno;
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
