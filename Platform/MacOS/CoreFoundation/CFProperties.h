#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <optional>

#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// What other programs and the system say of themselves, its texts safe to show.

/// `object` as a property value: a truth value, a whole number, a number with a fraction, a text or
/// a list of texts; `std::monostate` for anything else and for null.
tidewell::PropertyValue propertyValue(CFTypeRef object);

/// `object` as a dictionary with texts for keys; absent when it is anything else.
std::optional<tidewell::PropertyDictionary> propertyDictionary(CFTypeRef object);

}  // namespace platform
