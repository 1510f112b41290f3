#pragma once

#include <filesystem>
#include <optional>

#include "Platform/Linux/Power/PowerSituation.h"

namespace platform {

/// Reads the kernel's list of power supplies below `root`, which is laid out as
/// /sys/class/power_supply is. Absent when there is no such folder.
///
/// Batteries of peripherals do not count. Several batteries are taken together by what they hold. A
/// file that is missing or makes no sense is passed over.
std::optional<PowerSituation> readPowerSupplies(const std::filesystem::path& root);

}  // namespace platform
