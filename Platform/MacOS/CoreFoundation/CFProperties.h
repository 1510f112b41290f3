#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <optional>

#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// For descriptions that other programs and the system give of themselves. Their texts become safe
/// to show.

/// `object` as a property value: a truth value, a whole number, a number with a fraction, a text or
/// a list of texts; `std::monostate` for any other object and for null.
tidewell::PropertyValue propertyValue(CFTypeRef object);

/// `object` as a dictionary with texts for keys; absent for any other object.
std::optional<tidewell::PropertyDictionary> propertyDictionary(CFTypeRef object);

}  // namespace platform
