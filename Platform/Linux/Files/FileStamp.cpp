#include "Platform/Linux/Files/FileStamp.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>

namespace platform {
namespace {

constexpr std::int64_t kNanosPerSecond = 1'000'000'000;

std::int64_t nanos(const timespec& time) {
  // A file may claim to be of any year.
  constexpr std::int64_t kMostSeconds = INT64_MAX / kNanosPerSecond - 1;
  const std::int64_t seconds = std::clamp<std::int64_t>(time.tv_sec, -kMostSeconds, kMostSeconds);
  return seconds * kNanosPerSecond + time.tv_nsec;
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
