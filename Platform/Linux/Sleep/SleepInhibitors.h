#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/DesktopSetting.h"
#include "Platform/Linux/Sleep/ReadBack.h"
#include "Platform/Linux/Sleep/SleepAssertion.h"
#include "Platform/Linux/Sleep/SleepServices.h"
#include "Platform/Linux/Sleep/XServer.h"
#include "Platform/Linux/Time/BootTime.h"
#include "Platform/Posix/Tasks/SpawnedTaskLauncher.h"
#include "Platform/Recorded/RecordedPowerManagement.h"
#include "Tidewell/Ports/MainLoop.h"
#include "Tidewell/Ports/PowerManagement.h"

namespace platform {

/// Keeps the machine or its screen awake, with the services that decide on sleep in this session.
///
/// Live assertions follow the changes of the session. What a service forgot with a restart is asked
/// for again, and a better service that appears later is used. When no service can be asked, an
/// assertion is only recorded until one can be asked. Now and then the services are asked for their
/// lists, and what is missing there is taken again.
///
/// A service may need longer than a call waits. Then the creation fails, but whoever creates the
/// same kind again within some seconds gets what the service has granted meanwhile. When nobody
/// does, the late grant is given back.
class SleepInhibitors : public tidewell::PowerManagement {
 public:
  /// The buses and `loop` must outlive this object. `now` is the clock of the pauses and retries.
  /// `findXServer` serves the end of the last hold on XFCE, MATE and Cinnamon and the holds on
  /// LXQt, see `restartXfceIdleTime`, `restartMateIdleTime`, `restartCinnamonIdleTime` and
  /// `keepOffLxqt`. `settingsTool` is the path of GSettings' tool.
  SleepInhibitors(Bus& systemBus, Bus& sessionBus, tidewell::MainLoop& loop,
                  SleepAssertion::Now now = BootTime::now,
                  FindXServer findXServer = XAddress::ofEnvironment,
                  std::string settingsTool = kSettingsTool);
  ~SleepInhibitors() override;
  SleepInhibitors(const SleepInhibitors&) = delete;
  SleepInhibitors& operator=(const SleepInhibitors&) = delete;

  Creation createAssertion(tidewell::AssertionKind kind, const std::string& name) override;
  void setAssertionName(std::uint32_t id, const std::string& name) override;
  void releaseAssertion(std::uint32_t id) override;
  bool isGranted() override;
  std::string whyNotGranted() override;
  std::vector<LiveAssertion> liveAssertions() override;

 private:
  using Moment = SleepAssertion::Moment;

  struct Live {
    std::shared_ptr<SleepAssertion> assertion;
    /// The id in `recorded_` while no service grants the assertion, else 0.
    std::uint32_t recordedId = 0;
  };

  /// An assertion whose creation failed because no service answered in time.
  struct Unanswered {
    std::shared_ptr<SleepAssertion> assertion;
    Moment askedAt;
  };

  std::shared_ptr<SleepAssertion> assertionOf(tidewell::AssertionKind kind,
                                              const std::string& name);
  Creation failed(std::shared_ptr<SleepAssertion> assertion, std::int32_t error);
  std::uint32_t add(Live live);
  void serviceChanged(InhibitMechanism* mechanism, bool present);
  SleepServices::Row row(tidewell::AssertionKind kind);
  void hold(Live& live);
  std::vector<Grant> grants(const Live& live);
  bool compare(InhibitMechanism& mechanism, Moment askedAt, const ReadBack::Reasons& listed);
  void readBack();
  /// Whether a hold of the display is among them.
  [[nodiscard]] bool isOfDisplay() const;
  void keepOff();
  [[nodiscard]] std::optional<Moment> readBackDue(const InhibitMechanism& mechanism) const;
  /// Sets the timer that calls `attend` when the next work is due.
  void attendLater();
  void attend();

  Bus& systemBus_;
  Bus& sessionBus_;
  tidewell::MainLoop& loop_;
  SleepAssertion::Now now_;
  FindXServer findXServer_;
  SpawnedTaskLauncher launcher_;
  DesktopSettings desktopSettings_;
  RecordedPowerManagement recorded_;
  SleepServices services_;
  ReadBack readBack_;
  std::map<std::uint32_t, Live> live_;
  std::map<tidewell::AssertionKind, Unanswered> unanswered_;
  std::uint32_t lastId_ = 0;
  std::int32_t lastError_ = 0;  ///< Of the last attempt to take a hold; 0 for want of a service.
  /// When to find out again which services to ask; absent while that is known.
  std::optional<Moment> lookAgain_;
  /// When to keep off again a desktop that asks no service; absent where there is none.
  std::optional<Moment> keepOffAgain_;
  std::unique_ptr<tidewell::RepeatingTimer> attention_;
};

}  // namespace platform
