#include "Platform/Linux/Files/ReadLease.h"

#include <fcntl.h>

#include <cerrno>
#include <csignal>

namespace platform {

ReadLease::ReadLease(const std::filesystem::path& file)
    : file_(open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW | O_CLOEXEC)) {
  // The kernel tells of a waiting writer by a signal. The usual signal would end the program.
  if (!file_ || fcntl(file_.get(), F_SETSIG, SIGURG) != 0) return;
  isHeld_ = fcntl(file_.get(), F_SETLEASE, F_RDLCK) == 0;
  isRefused_ = !isHeld_ && errno == EAGAIN;
}

bool ReadLease::isWanted() const {
  return isHeld_ && fcntl(file_.get(), F_GETLEASE) != F_RDLCK;
}

}  // namespace platform
