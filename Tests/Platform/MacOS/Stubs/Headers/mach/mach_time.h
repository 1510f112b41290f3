#pragma once

// The units of the kernel's times, for systems without them. `Kernel.h` has the fraction.

#include <cstdint>

extern "C" {

struct mach_timebase_info_data_t {
  std::uint32_t numer;
  std::uint32_t denom;
};

int mach_timebase_info(mach_timebase_info_data_t* info);
}
