#pragma once

#include <optional>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/ListedInhibitor.h"

namespace platform {

/// What KDE's policy agent lists now. Absent when there is no such agent
/// or it cannot be asked. The agent lists some of logind's inhibitors once more.
std::optional<std::vector<ListedInhibitor>> listPolicyAgentInhibitors(Bus& sessionBus);

}  // namespace platform
