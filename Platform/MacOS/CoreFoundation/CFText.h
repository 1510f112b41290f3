#pragma once

#include <string>
#include <string_view>

#include "Platform/MacOS/CoreFoundation/CFRef.h"

namespace platform {

/// `text`, which is UTF-8, as a string object; broken sequences become U+FFFD. Never null.
CFRef<CFStringRef> makeCFString(std::string_view text);

/// `string` as UTF-8; a surrogate without a partner becomes U+FFFD. Empty for null.
std::string utf8(CFStringRef string);

}  // namespace platform
