#pragma once

#import <Foundation/Foundation.h>

#include <optional>
#include <string>
#include <string_view>

#include "Platform/MacOS/CoreFoundation/CFText.h"
#include "Tidewell/ForeignText.h"

namespace platform {

/// `text`, which is UTF-8, as a string object; broken sequences become U+FFFD.
inline NSString* nsString(std::string_view text) {
  return CFBridgingRelease(makeCFString(text).release());
}

/// `string` as UTF-8; a surrogate without a partner becomes U+FFFD. Empty for nil.
inline std::string utf8(NSString* string) {
  // ARC could drop the object as soon as only Core Foundation uses it.
  NS_VALID_UNTIL_END_OF_SCOPE NSString* kept = string;
  return utf8((__bridge CFStringRef)kept);
}

/// A text that others gave themselves, made safe to show; absent for nil.
inline std::optional<std::string> cleanedIfAny(NSString* string) {
  if (string == nil) return std::nullopt;
  return tidewell::cleaned(utf8(string));
}

}  // namespace platform
