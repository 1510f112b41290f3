#pragma once

#include <span>

#include "Tests/Campaign/Campaign.h"

namespace staylit::campaign {

/// All campaigns, in the order in which they are run and listed.
std::span<const Campaign> campaigns();

// The campaigns themselves, each in the file of its name.
Outcome killAtRandomMoments(Effort effort);
Outcome scale(Effort effort);
Outcome soak(Effort effort);
Outcome displays(Effort effort);
Outcome displaysThatStopLater(Effort effort);
Outcome hostileNames(Effort effort);
Outcome damagedMessages(Effort effort);
Outcome forgedMessages(Effort effort);
Outcome severalStaylits(Effort effort);
Outcome clockSteps(Effort effort);
/// Lets random machines live. The program and a second account of its rules must decide the same.
Outcome virtualTime(Effort effort);
/// `name` is the name of what is restarted, as `Restarts::parts` has it.
Outcome restarts(Effort effort, std::string_view name);
Outcome stopsOfStaylit(Effort effort);
Outcome stopsOfLogind(Effort effort);
Outcome stopsOfTheSystemBus(Effort effort);
Outcome stopsOfTheSessionBus(Effort effort);
Outcome settingsFiles(Effort effort);
Outcome historyKills(Effort effort);
Outcome historyDay(Effort effort);
Outcome failingCalls(Effort effort);

}  // namespace staylit::campaign
