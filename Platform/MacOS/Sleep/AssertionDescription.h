#pragma once

#include "Tidewell/Ports/AssertionTable.h"
#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// Reads the dictionary by which the system describes an assertion. What is missing there, or has
/// another type, counts as not told.
tidewell::ListedAssertion listedAssertion(const tidewell::PropertyDictionary& description);

}  // namespace platform
