#include "Platform/MacOS/CoreFoundation/CFText.h"

#include <cstddef>
#include <vector>

#include "Platform/MacOS/Text/Unicode.h"

namespace platform {
namespace {

CFRef<CFStringRef> decode(const std::string& text) {
  return CFRef<CFStringRef>::adopt(
      CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
                              static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8,
                              /*isExternalRepresentation=*/false));
}

}  // namespace

CFRef<CFStringRef> makeCFString(std::string_view text) {
  CFRef<CFStringRef> string = decode(repairedUtf8(text));
  if (!string) string = CFRef<CFStringRef>::retain(CFSTR(""));
  return string;
}

std::string utf8(CFStringRef string) {
  if (string == nullptr) return {};
  const CFIndex length = CFStringGetLength(string);
  std::vector<UniChar> units(static_cast<std::size_t>(length));
  CFStringGetCharacters(string, CFRangeMake(0, length), units.data());
  return utf8FromUtf16(units);
}

}  // namespace platform
