#include "Platform/Linux/Settings/FolderLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

namespace platform {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr auto kLockPatience = std::chrono::seconds(1);
constexpr auto kRetryPause = std::chrono::milliseconds(1);
constexpr auto kCourtesy = 3 * kRetryPause;

/// When this process last gave a lock back.
std::atomic<SteadyClock::time_point> lastRelease{};

/// A waiting process looks only now and then. It would never find the lock free if this process
/// took it again at once.
void letOthersIn() {
  std::this_thread::sleep_until(lastRelease.load() + kCourtesy);
}

/// The kernel must not wait for the lock, because the process that holds it may be stopped.
bool isLockedByAnother(int folder) {
  return flock(folder, LOCK_EX | LOCK_NB) != 0 && (errno == EWOULDBLOCK || errno == EINTR);
}

}  // namespace

FolderLock::FolderLock(const std::filesystem::path& folder)
    : folder_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (!folder_) {
    error_ = std::strerror(errno);
    return;
  }
  letOthersIn();
  const auto deadline = SteadyClock::now() + kLockPatience;
  while (isLockedByAnother(folder_.get())) {
    if (SteadyClock::now() >= deadline) {
      error_ = "the folder is locked by another program";
      isHeldByAnother_ = true;
      folder_.reset();
      return;
    }
    std::this_thread::sleep_for(kRetryPause);
  }
}

FolderLock::~FolderLock() {
  lastRelease = SteadyClock::now();
}

void FolderLock::synchronize() const {
  fsync(folder_.get());
}

}  // namespace platform
