#pragma once

#include <optional>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/ListedInhibitor.h"

namespace platform {

/// What org.freedesktop.PowerManagement has now: by the owners' names where it tells them, as on
/// XFCE, else one entry without a holder where it tells only that somebody holds something. Absent
/// when there is no such service or it tells nothing. Two bounded calls.
///
/// On KDE the policy agent has the same, and more (`listPolicyAgentInhibitors`).
std::optional<std::vector<ListedInhibitor>> listPowerManagementInhibitors(Bus& sessionBus);

}  // namespace platform
