#pragma once

#include "Tests/Campaign/Campaign.h"

namespace staylit::campaign {

/// Lets random machines live for thousands of hours. The program and a second account of its rules
/// must decide the same on them.
Outcome virtualTime(Effort effort);

}  // namespace staylit::campaign
