#pragma once

#include "Tidewell/Ports/Text.h"

namespace platform {

/// What the Unicode module offers under the name `kMakeText`: a new object, the caller's to
/// destroy.
using MakeText = tidewell::Text* (*)();

inline constexpr const char* kUnicodeModule = "libstaylit-unicode.so";
inline constexpr const char* kMakeText = "staylitMakeText";

}  // namespace platform
