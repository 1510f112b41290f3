#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "Platform/Linux/Applications/NamedHolders.h"
#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/SessionManagerList.h"
#include "Tidewell/Ports/AssertionTable.h"

namespace platform {

/// Who keeps the machine awake, as logind, the session manager and KDE's policy agent list it, less
/// other Staylits (`StaylitHolds`). This process stands there as logind lists it.
///
/// A holder without a process stands there under a negative number, which `NamedHolders` names.
/// Absent only when none of the three can be asked.
class InhibitorList : public tidewell::AssertionTable {
 public:
  /// The buses must outlive this.
  InhibitorList(Bus& systemBus, Bus& sessionBus, std::shared_ptr<NamedHolders> namedHolders);

  std::optional<std::vector<tidewell::AssertionHolder>> assertionsByProcess() override;
  std::int32_t ownProcessIdentifier() override;

 private:
  Bus& systemBus_;
  Bus& sessionBus_;
  std::shared_ptr<NamedHolders> namedHolders_;
  SessionManagerList sessionManagerList_;
  BusListening policyAgentPresence_;
};

}  // namespace platform
