#pragma once

#include <optional>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/ListedInhibitor.h"

namespace platform {

/// The inhibitors that KDE's policy agent lists now. Absent when there is no such agent, or it
/// cannot be asked. The agent also lists some of logind's inhibitors.
std::optional<std::vector<ListedInhibitor>> listPolicyAgentInhibitors(Bus& sessionBus);

}  // namespace platform
