#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <variant>

#include "Tests/Platform/MacOS/Stubs/Ledger.h"
#include "Tests/Platform/MacOS/Stubs/Utf16.h"

namespace platform::stub {
namespace {

/// The place of `Content` among all that an object can hold, from 1.
template <typename Content, typename... All>
constexpr CFTypeID placeIn(const std::variant<All...>*) {
  CFTypeID place = 1;
  // Ends at the first of that type.
  static_cast<void>(((std::is_same_v<Content, All> || (++place, false)) || ...));
  return place;
}

template <typename Content>
constexpr CFTypeID typeOf() {
  return placeIn<Content>(static_cast<const Object::Content*>(nullptr));
}

/// Whether `range` lies in `text`; complains otherwise.
bool contains(const std::u16string& text, CFRange range, const char* function) {
  const auto length = static_cast<CFIndex>(text.size());
  const bool isInside = range.location >= 0 && range.length >= 0 && range.location <= length &&
                        range.length <= length - range.location;
  if (!isInside) Ledger::shared().complain(std::string(function) + ": beyond the end");
  return isInside;
}

std::u16string part(const std::u16string& text, CFRange range) {
  return text.substr(static_cast<std::size_t>(range.location),
                     static_cast<std::size_t>(range.length));
}

/// Whether the unit belongs to the character that began before it. Knows pairs of surrogates and
/// the common combining marks; the system knows more.
bool continuesCharacter(char16_t unit) {
  return (unit >= 0xDC00 && unit <= 0xDFFF) || (unit >= 0x0300 && unit <= 0x036F);
}

}  // namespace
}  // namespace platform::stub

using platform::stub::Ledger;
using platform::stub::Object;

extern "C" {

CFTypeRef CFRetain(CFTypeRef object) {
  Ledger::shared().retain(object);
  return object;
}

void CFRelease(CFTypeRef object) {
  Ledger::shared().release(object);
}

CFTypeID CFGetTypeID(CFTypeRef object) {
  const Object* const known = Ledger::shared().use(object, "CFGetTypeID");
  return known == nullptr ? 0 : known->content.index() + 1;
}

CFTypeID CFStringGetTypeID() {
  return platform::stub::typeOf<std::u16string>();
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex count,
                                    CFStringEncoding encoding, Boolean) {
  Ledger& ledger = Ledger::shared();
  if (encoding != kCFStringEncodingUTF8) {
    ledger.complain("CFStringCreateWithBytes: an unknown encoding");
    return nullptr;
  }
  const std::string text(bytes, bytes + count);
  const auto units = platform::stub::utf16(text);
  if (!units) return nullptr;
  return static_cast<CFStringRef>(
      ledger.handOver(ledger.make(Object::Content(*units), "CFStringCreateWithBytes")));
}

CFStringRef CFStringCreateWithSubstring(CFAllocatorRef, CFStringRef string, CFRange range) {
  constexpr const char* kFunction = "CFStringCreateWithSubstring";
  Ledger& ledger = Ledger::shared();
  const auto* const text = ledger.use<std::u16string>(string, kFunction);
  if (text == nullptr || !platform::stub::contains(*text, range, kFunction)) return nullptr;
  return static_cast<CFStringRef>(
      ledger.handOver(ledger.make(Object::Content(platform::stub::part(*text, range)), kFunction)));
}

CFIndex CFStringGetLength(CFStringRef string) {
  const auto* const text = Ledger::shared().use<std::u16string>(string, "CFStringGetLength");
  return text == nullptr ? 0 : static_cast<CFIndex>(text->size());
}

void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* buffer) {
  constexpr const char* kFunction = "CFStringGetCharacters";
  const auto* const text = Ledger::shared().use<std::u16string>(string, kFunction);
  if (text == nullptr || !platform::stub::contains(*text, range, kFunction)) return;
  std::ranges::copy(platform::stub::part(*text, range), buffer);
}

CFRange CFStringGetRangeOfComposedCharactersAtIndex(CFStringRef string, CFIndex index) {
  constexpr const char* kFunction = "CFStringGetRangeOfComposedCharactersAtIndex";
  const auto* const text = Ledger::shared().use<std::u16string>(string, kFunction);
  if (text == nullptr || !platform::stub::contains(*text, {index, 1}, kFunction)) return {0, 0};
  auto begin = static_cast<std::size_t>(index);
  while (begin > 0 && platform::stub::continuesCharacter((*text)[begin]))
    --begin;
  std::size_t end = static_cast<std::size_t>(index) + 1;
  while (end < text->size() && platform::stub::continuesCharacter((*text)[end]))
    ++end;
  return {static_cast<CFIndex>(begin), static_cast<CFIndex>(end - begin)};
}

CFTypeID CFNumberGetTypeID() {
  return platform::stub::typeOf<Object::Number>();
}

Boolean CFNumberIsFloatType(CFNumberRef number) {
  const auto* const value = Ledger::shared().use<Object::Number>(number, "CFNumberIsFloatType");
  return value != nullptr && std::holds_alternative<double>(*value);
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
  constexpr const char* kFunction = "CFNumberGetValue";
  const auto* const known = Ledger::shared().use<Object::Number>(number, kFunction);
  if (known == nullptr) return false;
  const auto write = [value](auto converted) { std::memcpy(value, &converted, sizeof converted); };
  std::visit(
      [&](auto plain) {
        if (type == kCFNumberSInt64Type) return write(static_cast<std::int64_t>(plain));
        if (type == kCFNumberDoubleType) return write(static_cast<double>(plain));
        Ledger::shared().complain(std::string(kFunction) + ": an unknown type of number");
      },
      *known);
  return std::holds_alternative<double>(*known) == (type == kCFNumberDoubleType);
}

CFTypeID CFBooleanGetTypeID() {
  return platform::stub::typeOf<bool>();
}

Boolean CFBooleanGetValue(CFBooleanRef boolean) {
  const bool* const value = Ledger::shared().use<bool>(boolean, "CFBooleanGetValue");
  return value != nullptr && *value;
}

CFTypeID CFArrayGetTypeID() {
  return platform::stub::typeOf<Object::Objects>();
}

CFIndex CFArrayGetCount(CFArrayRef array) {
  const auto* const objects = Ledger::shared().use<Object::Objects>(array, "CFArrayGetCount");
  return objects == nullptr ? 0 : static_cast<CFIndex>(objects->size());
}

const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
  constexpr const char* kFunction = "CFArrayGetValueAtIndex";
  const auto* const objects = Ledger::shared().use<Object::Objects>(array, kFunction);
  if (objects == nullptr) return nullptr;
  if (index >= 0 && index < static_cast<CFIndex>(objects->size()))
    return (*objects)[static_cast<std::size_t>(index)];
  Ledger::shared().complain(std::string(kFunction) + ": beyond the end");
  return nullptr;
}

CFTypeID CFDictionaryGetTypeID() {
  return platform::stub::typeOf<Object::Pairs>();
}

CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary) {
  const auto* const pairs = Ledger::shared().use<Object::Pairs>(dictionary, "CFDictionaryGetCount");
  return pairs == nullptr ? 0 : static_cast<CFIndex>(pairs->keys.size());
}

void CFDictionaryGetKeysAndValues(CFDictionaryRef dictionary, const void** keys,
                                  const void** values) {
  const auto* const pairs =
      Ledger::shared().use<Object::Pairs>(dictionary, "CFDictionaryGetKeysAndValues");
  if (pairs == nullptr) return;
  std::ranges::copy(pairs->keys, keys);
  std::ranges::copy(pairs->values, values);
}

CFStringRef stubConstantString(const char* text) {
  return static_cast<CFStringRef>(Ledger::shared().constant(text));
}
}
