#pragma once

#include <cstdint>
#include <functional>

namespace platform {

/// Calls `visit` with each entry of a directory whose name is a whole number that fits, until it
/// returns false. Reads from where `directory` stands. False when the directory cannot be read to
/// its end, or was stopped.
bool visitNumberedEntries(int directory, const std::function<bool(std::int32_t number)>& visit);

}  // namespace platform
