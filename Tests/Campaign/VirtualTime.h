#pragma once

#include "Tests/Campaign/Campaign.h"

namespace staylit::campaign {

/// Thousands of hours of random machines, on which the program and a second account of its rules
/// must say and hold the same.
Outcome virtualTime(Effort effort);

}  // namespace staylit::campaign
