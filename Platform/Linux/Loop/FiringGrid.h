#pragma once

#include <cstdint>

namespace platform {

/// When a timer that was due at `due` and fires at `now` is due next, all in microseconds: on the
/// grid of `interval` (not 0) that `due` lies on, and after `now`, however late the firing is.
constexpr std::uint64_t nextFiring(std::uint64_t due, std::uint64_t interval, std::uint64_t now) {
  const std::uint64_t next = due + interval;
  return next > now ? next : next + ((now - next) / interval + 1) * interval;
}

}  // namespace platform
