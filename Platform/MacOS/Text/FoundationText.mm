#include "Platform/MacOS/Text/FoundationText.h"

#import <Foundation/Foundation.h>

#include "Platform/MacOS/Text/NSText.h"

namespace platform {

std::string FoundationText::lowercased(std::string_view text) {
  @autoreleasepool {
    return utf8(nsString(text).lowercaseString);
  }
}

std::weak_ordering FoundationText::localizedCaseInsensitiveCompare(std::string_view left,
                                                                   std::string_view right) {
  @autoreleasepool {
    switch ([nsString(left) localizedCaseInsensitiveCompare:nsString(right)]) {
      case NSOrderedAscending:
        return std::weak_ordering::less;
      case NSOrderedDescending:
        return std::weak_ordering::greater;
      case NSOrderedSame:
        break;
    }
    return std::weak_ordering::equivalent;
  }
}

std::string FoundationText::padded(std::string_view text, std::size_t length) {
  @autoreleasepool {
    NSString* string = nsString(text);
    NSUInteger end = 0;
    std::size_t count = 0;
    for (; end < string.length && count < length; ++count) {
      end = NSMaxRange([string rangeOfComposedCharacterSequenceAtIndex:end]);
    }
    return utf8([string substringToIndex:end]).append(length - count, ' ');
  }
}

}  // namespace platform
