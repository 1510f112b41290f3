#include "Platform/Posix/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <initializer_list>

namespace platform {

void prepareStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // The lowest free number is given out, which is this one.
    if (fcntl(stream, F_GETFD) < 0 && open("/dev/null", O_RDWR) < 0) return;
  }
  std::signal(SIGPIPE, SIG_IGN);
}

}  // namespace platform
