#pragma once

#include "Tidewell/Ports/AssertionTable.h"

namespace platform {

/// Every process's assertions as IOKit's power management lists them, less those of other Staylits
/// (two that counted each other's would keep the machine awake for ever), and less those by which
/// the system itself stays awake for its display (`withoutLitDisplay`).
class IOKitAssertionTable final : public tidewell::AssertionTable {
 public:
  std::optional<std::vector<tidewell::AssertionHolder>> assertionsByProcess() override;
  std::int32_t ownProcessIdentifier() override;
};

}  // namespace platform
