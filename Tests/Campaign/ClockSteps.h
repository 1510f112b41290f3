#pragma once

#include "Tests/Campaign/Campaign.h"

namespace staylit::campaign {

/// Sets the wall clock of the real program, by seconds and by years, in each state that the program
/// can be in.
Outcome clockSteps(Effort effort);

}  // namespace staylit::campaign
