#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/LogindLock.h"
#include "Platform/Posix/Files/Descriptor.h"
#include "Tidewell/Ports/LidSwitch.h"
#include "Tidewell/Ports/MainLoop.h"

namespace platform {

/// Keeps logind from acting on the lid, with a lock that ends with the process.
///
/// When the desktop acts on the lid instead of logind, the lock is of no use. `hold` then fails and
/// names the desktop. While the lock is held, it is taken again after each restart of logind. Main
/// thread only.
class LidInhibitor : public tidewell::LidSwitch {
 public:
  /// `systemBus` and `loop` must outlive this object.
  LidInhibitor(Bus& systemBus, tidewell::MainLoop& loop);
  ~LidInhibitor() override;
  LidInhibitor(const LidInhibitor&) = delete;
  LidInhibitor& operator=(const LidInhibitor&) = delete;

  std::optional<Failure> hold() override;
  void holdAsking(Answer answer) override;
  std::optional<Failure> resume() override;
  std::optional<Failure> release() override;
  std::string lastFailure() override { return lastFailure_; }
  bool holds() override;
  bool isTriedAgain() override;
  bool isHeld() override;
  [[nodiscard]] std::shared_ptr<void> observe(std::function<void(bool holds)> changed) override;

 private:
  using Observer = std::function<void(bool holds)>;

  LogindLock take();
  std::optional<Failure> tryToHold(LogindLock& failed);
  void watchLogind();
  void logindChanged(bool present);
  void takeAgain();
  void failedAgain(const LogindLock& failed);
  void tryLater();
  void accept(Descriptor lock);
  void answered(LogindLock lock);
  void tell(bool holds);

  Bus& systemBus_;
  tidewell::MainLoop& loop_;
  Descriptor lock_;
  /// Whether logind has restarted since, so that it may have forgotten the lock.
  bool isDoubtful_ = false;
  /// How often in a row logind was asked in vain for a missing or doubtful lock.
  int failures_ = 0;
  std::string lastFailure_;
  /// Set while the lock is held or wanted.
  BusListening presence_;
  std::unique_ptr<tidewell::RepeatingTimer> retry_;
  BusSlot question_;  ///< Set while the user is asked.
  Answer answer_;
  std::vector<std::weak_ptr<Observer>> observers_;
};

}  // namespace platform
