#include "Platform/MacOS/CoreFoundation/CFProperties.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "Platform/MacOS/CoreFoundation/CFCast.h"
#include "Platform/MacOS/CoreFoundation/CFText.h"
#include "Tidewell/ForeignText.h"

namespace platform {
namespace {

tidewell::PropertyValue numberValue(CFNumberRef number) {
  if (CFNumberIsFloatType(number)) {
    double value = 0;
    CFNumberGetValue(number, kCFNumberDoubleType, &value);
    return value;
  }
  std::int64_t value = 0;
  CFNumberGetValue(number, kCFNumberSInt64Type, &value);
  return value;
}

tidewell::PropertyValue listValue(CFArrayRef list) {
  std::vector<std::string> texts;
  for (CFIndex index = 0; index < CFArrayGetCount(list); ++index) {
    const CFStringRef text = asString(CFArrayGetValueAtIndex(list, index));
    if (text == nullptr) return std::monostate{};
    texts.push_back(tidewell::cleaned(utf8(text)));
  }
  return texts;
}

}  // namespace

tidewell::PropertyValue propertyValue(CFTypeRef object) {
  if (const CFStringRef text = asString(object)) {
    return tidewell::cleaned(utf8(text));
  }
  if (const CFBooleanRef truth = asBoolean(object)) return CFBooleanGetValue(truth) != 0;
  if (const CFNumberRef number = asNumber(object)) return numberValue(number);
  if (const CFArrayRef list = asArray(object)) return listValue(list);
  return std::monostate{};
}

std::optional<tidewell::PropertyDictionary> propertyDictionary(CFTypeRef object) {
  const CFDictionaryRef dictionary = asDictionary(object);
  if (dictionary == nullptr) return std::nullopt;
  const auto count = static_cast<std::size_t>(CFDictionaryGetCount(dictionary));
  std::vector<const void*> keys(count);
  std::vector<const void*> values(count);
  CFDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
  tidewell::PropertyDictionary properties;
  for (std::size_t index = 0; index < count; ++index) {
    const CFStringRef key = asString(keys[index]);
    if (key == nullptr) return std::nullopt;
    properties.insert_or_assign(tidewell::cleaned(utf8(key)), propertyValue(values[index]));
  }
  return properties;
}

}  // namespace platform
