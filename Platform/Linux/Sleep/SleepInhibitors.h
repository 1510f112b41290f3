#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/SleepAssertion.h"
#include "Platform/Linux/Sleep/SleepServices.h"
#include "Platform/Recorded/RecordedPowerManagement.h"
#include "Tidewell/Ports/MainLoop.h"
#include "Tidewell/Ports/PowerManagement.h"

namespace platform {

/// Holds the machine or its screen awake through whichever services decide on that here.
///
/// Every live assertion follows the session: what a service forgot by restarting is asked for
/// again, a better service that appears later is used, and where nobody can be asked the assertion
/// is only recorded until somebody can.
class SleepInhibitors : public tidewell::PowerManagement {
 public:
  /// All three must outlive this.
  SleepInhibitors(Bus& systemBus, Bus& sessionBus, tidewell::MainLoop& loop);
  ~SleepInhibitors() override;
  SleepInhibitors(const SleepInhibitors&) = delete;
  SleepInhibitors& operator=(const SleepInhibitors&) = delete;

  Creation createAssertion(std::string_view type, std::uint32_t level,
                           const std::string& name) override;
  void setAssertionName(std::uint32_t id, const std::string& name) override;
  void releaseAssertion(std::uint32_t id) override;

 private:
  struct Live {
    std::shared_ptr<SleepAssertion> assertion;
    /// Its id in `recorded_` while no service grants it, else 0.
    std::uint32_t recordedId = 0;
  };

  std::uint32_t add(Live live);
  void serviceChanged(const InhibitMechanism* mechanism, bool present);
  void holdAgain(Live& live);
  void forgetRecordIfHeld(Live& live);
  /// Sees after a while to what a service has not granted or not heeded yet.
  void attendLater();
  void attend();

  tidewell::MainLoop& loop_;
  RecordedPowerManagement recorded_;
  SleepServices services_;
  std::map<std::uint32_t, Live> live_;
  std::uint32_t lastId_ = 0;
  std::unique_ptr<tidewell::RepeatingTimer> attention_;
};

}  // namespace platform
