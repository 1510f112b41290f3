#pragma once

#include <cstdint>

namespace platform {

/// The next firing of a timer that was due at `due` and fires at `now`, in microseconds: the first
/// point after `now` on the grid of `interval` (not 0) through `due`, however late the firing is.
constexpr std::uint64_t nextFiring(std::uint64_t due, std::uint64_t interval, std::uint64_t now) {
  const std::uint64_t next = due + interval;
  return next > now ? next : next + ((now - next) / interval + 1) * interval;
}

}  // namespace platform
