#pragma once

#include "Tidewell/Ports/Text.h"

namespace platform {

/// The Unicode module offers this function under the name `kMakeText`. It returns a new object,
/// which belongs to the caller.
using MakeText = tidewell::Text* (*)();

inline constexpr const char* kUnicodeModule = "libstaylit-unicode.so";
inline constexpr const char* kMakeText = "staylitMakeText";

}  // namespace platform
