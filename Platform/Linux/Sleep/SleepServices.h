#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/FreedesktopInhibitor.h"
#include "Platform/Linux/Sleep/InhibitMechanism.h"
#include "Platform/Linux/Sleep/LogindInhibitor.h"
#include "Platform/Linux/Sleep/SessionManagerInhibitor.h"
#include "Platform/Linux/Sleep/SleepAssertion.h"
#include "Tidewell/Ports/PowerManagement.h"

namespace platform {

/// Knows which services decide on idle sleep in this session, and hence whom to ask. Main thread
/// only.
class SleepServices {
 public:
  /// Whom to ask for a hold, in order. When that is nobody, `error` is 0 if there is nobody to ask
  /// at all, else the negative errno for which that could not be found out.
  struct Row {
    SleepAssertion::Mechanisms mechanisms;
    int error = 0;
  };

  /// Called from the loop when a service has gone or come. One that has gone took every inhibition
  /// with it that it had granted; `mechanism` is null for one that only changes whom to ask.
  using Changed = std::function<void(InhibitMechanism* mechanism, bool present)>;

  /// The buses must outlive this. `changed` must not destroy it.
  SleepServices(Bus& systemBus, Bus& sessionBus, Changed changed);

  Row row(tidewell::AssertionKind kind);
  /// All that a row may name.
  SleepAssertion::Mechanisms all();

 private:
  static bool isPresent(Bus& bus, const std::string& name, int& error);

  Bus& systemBus_;
  Bus& sessionBus_;
  LogindInhibitor logind_;
  SessionManagerInhibitor sessionManager_;
  FreedesktopInhibitor powerManagement_;
  FreedesktopInhibitor screenSaver_;
  std::vector<BusListening> watches_;
};

}  // namespace platform
