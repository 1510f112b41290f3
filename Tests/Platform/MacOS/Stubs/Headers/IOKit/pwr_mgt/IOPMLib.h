#pragma once

// The power assertions of IOKit, for systems without it. `PowerService.h` has their state.

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>

extern "C" {

using IOReturn = int;
using IOPMAssertionID = std::uint32_t;
using IOPMAssertionLevel = std::uint32_t;

IOReturn IOPMAssertionCreateWithName(CFStringRef type, IOPMAssertionLevel level, CFStringRef name,
                                     IOPMAssertionID* identifier);
IOReturn IOPMAssertionSetProperty(IOPMAssertionID identifier, CFStringRef key, CFTypeRef value);
IOReturn IOPMAssertionRelease(IOPMAssertionID identifier);
IOReturn IOPMCopyAssertionsByProcess(CFDictionaryRef* answer);
}

inline constexpr IOReturn kIOReturnSuccess = 0;
inline constexpr IOReturn kIOReturnError = -536'870'212;
inline constexpr IOReturn kIOReturnBadArgument = -536'870'206;
inline constexpr IOReturn kIOReturnNotFound = -536'870'160;

#define kIOPMAssertionNameKey CFSTR("AssertName")
