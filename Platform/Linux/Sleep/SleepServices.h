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

/// Knows which services decide on idle sleep in this session, and so have to be asked. Main thread
/// only.
class SleepServices {
 public:
  /// The services to ask for a hold, in this order. When there are none, `error` is 0 if this
  /// session has no such service, or the negative errno that kept the services from being found.
  struct Row {
    SleepAssertion::Mechanisms mechanisms;
    int error = 0;
  };

  /// Called from the loop when a service has come or gone. A service that has gone has lost
  /// everything that it granted. `mechanism` is null for a service that is not asked itself, but
  /// decides which others are asked.
  using Changed = std::function<void(InhibitMechanism* mechanism, bool present)>;

  /// The buses must outlive this object. `changed` must not destroy it.
  SleepServices(Bus& systemBus, Bus& sessionBus, Changed changed);

  Row row(tidewell::AssertionKind kind);
  /// All services that a row may name.
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
