#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/ListedInhibitor.h"

namespace platform {

/// One entry of the policy agent's list, in the agent's own words.
struct PolicyAgentEntry {
  std::string application;
  std::string reason;
};

/// Reads the list in a reply of KDE's policy agent. Absent when the list has an unknown type, or
/// cannot be read to its end.
std::optional<std::vector<PolicyAgentEntry>> readPolicyAgentList(const BusReply& reply);

/// The inhibitors that KDE's policy agent lists now. Absent when there is no such agent, or it
/// cannot be asked. The agent also lists some of logind's inhibitors.
std::optional<std::vector<ListedInhibitor>> listPolicyAgentInhibitors(Bus& sessionBus);

}  // namespace platform
