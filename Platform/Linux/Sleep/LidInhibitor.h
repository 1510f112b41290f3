#pragma once

#include <memory>
#include <optional>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/LogindLock.h"
#include "Platform/Linux/System/Descriptor.h"
#include "Tidewell/Ports/LidSwitch.h"
#include "Tidewell/Ports/MainLoop.h"

namespace platform {

/// Keeps logind from acting on the lid, by a lock that ends with the process.
///
/// Of no use where the desktop acts on the lid in logind's stead: there `hold` fails and says who
/// does. While it is held it is taken again whenever logind restarts. Main thread only.
class LidInhibitor : public tidewell::LidSwitch {
 public:
  /// Both must outlive this.
  LidInhibitor(Bus& systemBus, tidewell::MainLoop& loop);
  ~LidInhibitor() override;
  LidInhibitor(const LidInhibitor&) = delete;
  LidInhibitor& operator=(const LidInhibitor&) = delete;

  std::optional<Failure> hold(Approval approval) override;
  std::optional<Failure> release() override;
  bool isHeld() override;

 private:
  LogindLock take(BusApproval approval);
  void logindChanged(bool present);
  void takeAgain();

  Bus& systemBus_;
  tidewell::MainLoop& loop_;
  Descriptor lock_;
  /// logind has gone since, and may or may not still know of the lock.
  bool isDoubtful_ = false;
  BusListening presence_;
  std::unique_ptr<tidewell::RepeatingTimer> retry_;
};

}  // namespace platform
