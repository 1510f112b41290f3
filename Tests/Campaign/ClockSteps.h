#pragma once

#include "Tests/Campaign/Campaign.h"

namespace staylit::campaign {

/// The clock on the wall of the real program is set, by seconds and by years, in each state that it
/// can be in.
Outcome clockSteps(Effort effort);

}  // namespace staylit::campaign
