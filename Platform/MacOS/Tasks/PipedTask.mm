#include "Platform/MacOS/Tasks/PipedTask.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace platform {

PipedTask::PipedTask(NSTask* task, NSPipe* output, NSPipe* wake)
    : task_(task),
      output_(output.fileHandleForReading),
      wake_(wake),
      outputDescriptor_(output_.fileDescriptor),
      wakeDescriptor_(wake.fileHandleForReading.fileDescriptor) {}

PipedTask::~PipedTask() {
  @autoreleasepool {
    terminate();
    // The task object holds the pipe too, and may live on until the tool has ended.
    [output_ closeAndReturnError:nil];
  }
}

std::optional<std::string> PipedTask::readToEnd(std::size_t limit) {
  std::string text;
  std::array<char, 16384> buffer{};
  while (waitForOutput()) {
    const ssize_t count = read(outputDescriptor_, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    text.append(buffer.data(), static_cast<std::size_t>(count));
    if (text.size() > limit) return std::nullopt;
  }
  return text;
}

/// False when the wait was ended by `terminate`.
bool PipedTask::waitForOutput() const {
  std::array<pollfd, 2> waited{
      pollfd{.fd = outputDescriptor_, .events = POLLIN, .revents = 0},
      pollfd{.fd = wakeDescriptor_, .events = POLLIN, .revents = 0},
  };
  int ready = 0;
  do {
    ready = poll(waited.data(), waited.size(), -1);
  } while (ready < 0 && errno == EINTR);
  return ready > 0 && waited[1].revents == 0;
}

bool PipedTask::isRunning() {
  @autoreleasepool {
    const std::lock_guard guard(lock_);
    return task_.isRunning;
  }
}

void PipedTask::terminate() {
  @autoreleasepool {
    const std::lock_guard guard(lock_);
    if (task_.isRunning) [task_ terminate];
    if (isWoken_) return;
    // The signal alone would not do: the tool may ignore it, or have children that hold the pipe.
    isWoken_ = write(wake_.fileHandleForWriting.fileDescriptor, "", 1) == 1;
  }
}

}  // namespace platform
