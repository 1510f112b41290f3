#pragma once

#include <cstdint>
#include <functional>

namespace platform {

/// Calls `visit` with each entry of a directory whose name is a whole number of 32 bits, until
/// `visit` returns false. Begins at the directory's read position. False when `visit` stopped it,
/// or when the directory cannot be read to its end.
bool visitNumberedEntries(int directory, const std::function<bool(std::int32_t number)>& visit);

}  // namespace platform
