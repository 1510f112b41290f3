#pragma once

#include <CoreFoundation/CoreFoundation.h>

namespace platform {

// Objects from others may have any type. Each of these functions returns the object as the wanted
// type. It returns null for null and for an object of another type. No reference is added.

inline bool isOfType(CFTypeRef object, CFTypeID type) {
  return object != nullptr && CFGetTypeID(object) == type;
}

inline CFStringRef asString(CFTypeRef object) {
  return isOfType(object, CFStringGetTypeID()) ? static_cast<CFStringRef>(object) : nullptr;
}

inline CFNumberRef asNumber(CFTypeRef object) {
  return isOfType(object, CFNumberGetTypeID()) ? static_cast<CFNumberRef>(object) : nullptr;
}

inline CFBooleanRef asBoolean(CFTypeRef object) {
  return isOfType(object, CFBooleanGetTypeID()) ? static_cast<CFBooleanRef>(object) : nullptr;
}

inline CFArrayRef asArray(CFTypeRef object) {
  return isOfType(object, CFArrayGetTypeID()) ? static_cast<CFArrayRef>(object) : nullptr;
}

inline CFDictionaryRef asDictionary(CFTypeRef object) {
  return isOfType(object, CFDictionaryGetTypeID()) ? static_cast<CFDictionaryRef>(object) : nullptr;
}

}  // namespace platform
