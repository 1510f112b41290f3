#include "Platform/Linux/System/FileStamp.h"

#include <cstdlib>
#include <ctime>

namespace platform {
namespace {

constexpr std::int64_t kNanosPerSecond = 1'000'000'000;

std::int64_t nanos(const timespec& time) {
  return std::int64_t{time.tv_sec} * kNanosPerSecond + time.tv_nsec;
}

}  // namespace

FileStamp FileStamp::of(const struct stat& status) {
  return {status.st_dev, status.st_ino, status.st_size, nanos(status.st_mtim)};
}

bool FileStamp::isSettled() const {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return std::abs(nanos(now) - modifiedNanos) > 2 * kNanosPerSecond;
}

}  // namespace platform
