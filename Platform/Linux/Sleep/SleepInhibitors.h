#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/ReadBack.h"
#include "Platform/Linux/Sleep/SleepAssertion.h"
#include "Platform/Linux/Sleep/SleepServices.h"
#include "Platform/Linux/Time/BootTime.h"
#include "Platform/Recorded/RecordedPowerManagement.h"
#include "Tidewell/Ports/MainLoop.h"
#include "Tidewell/Ports/PowerManagement.h"

namespace platform {

/// Holds the machine or its screen awake through whichever services decide on that here.
///
/// Every live assertion follows the session: what a service forgot by restarting is asked for
/// again, a better service that appears later is used, and where nobody can be asked the assertion
/// is only recorded until somebody can. Now and then the services are asked for their own lists,
/// and what is missing there is taken again.
class SleepInhibitors : public tidewell::PowerManagement {
 public:
  /// The first three must outlive this. `now` is the clock by which the loop's timers go.
  SleepInhibitors(Bus& systemBus, Bus& sessionBus, tidewell::MainLoop& loop,
                  SleepAssertion::Now now = BootTime::now);
  ~SleepInhibitors() override;
  SleepInhibitors(const SleepInhibitors&) = delete;
  SleepInhibitors& operator=(const SleepInhibitors&) = delete;

  Creation createAssertion(tidewell::AssertionKind kind, const std::string& name) override;
  void setAssertionName(std::uint32_t id, const std::string& name) override;
  void releaseAssertion(std::uint32_t id) override;
  bool isGranted() override;
  std::vector<LiveAssertion> liveAssertions() override;

 private:
  using Moment = SleepAssertion::Moment;

  struct Live {
    std::shared_ptr<SleepAssertion> assertion;
    Moment created;
    /// Its id in `recorded_` while no service grants it, else 0.
    std::uint32_t recordedId = 0;
  };

  std::uint32_t add(Live live);
  void serviceChanged(InhibitMechanism* mechanism, bool present);
  SleepServices::Row row(tidewell::AssertionKind kind);
  void hold(Live& live);
  std::vector<Grant> grants(const Live& live);
  bool compare(InhibitMechanism& mechanism, Moment askedAt, const ReadBack::Reasons& listed);
  void readBack();
  [[nodiscard]] std::optional<Moment> readBackDue(const InhibitMechanism& mechanism) const;
  /// Sees to it that `attend` comes when there is something to be done next.
  void attendLater();
  void attend();

  tidewell::MainLoop& loop_;
  SleepAssertion::Now now_;
  RecordedPowerManagement recorded_;
  SleepServices services_;
  ReadBack readBack_;
  std::map<std::uint32_t, Live> live_;
  std::uint32_t lastId_ = 0;
  /// When it is to be found out again whom to ask; absent as long as that is known.
  std::optional<Moment> lookAgain_;
  std::unique_ptr<tidewell::RepeatingTimer> attention_;
};

}  // namespace platform
