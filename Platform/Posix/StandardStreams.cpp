#include "Platform/Posix/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <initializer_list>

namespace platform {

void prepareStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // `open` returns the lowest free number, which is that of the closed stream.
    if (fcntl(stream, F_GETFD) < 0 && open("/dev/null", O_RDWR) < 0) return;
  }
  std::signal(SIGPIPE, SIG_IGN);
}

}  // namespace platform
