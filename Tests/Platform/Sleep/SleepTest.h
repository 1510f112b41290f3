#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Linux/Sleep/SleepInhibitors.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/FakeLogind.h"
#include "Tests/Platform/Support/FakeSessionService.h"

namespace platform::testing {

inline constexpr const char* kGnome = "org.gnome.SessionManager";
inline constexpr const char* kPowerManagement = "org.freedesktop.PowerManagement";
inline constexpr const char* kScreenSaver = "org.freedesktop.ScreenSaver";
inline constexpr const char* kSolid = "org.kde.Solid.PowerManagement";

inline constexpr auto kSystem = tidewell::AssertionKind::system;
inline constexpr auto kDisplay = tidewell::AssertionKind::display;

using Lines = std::vector<std::string>;

/// After this time a service may be asked for a change again.
inline constexpr std::chrono::seconds kPause{5};

/// The inhibitors on private buses, with the services that a test puts there.
class SleepTest : public BusTest {
 protected:
  void SetUp() override {
    BusTest::SetUp();
    if (IsSkipped()) return;
    inhibitors =
        std::make_unique<SleepInhibitors>(*systemBus, *sessionBus, *loop, [this] { return now; });
  }
  void TearDown() override { inhibitors.reset(); }

  std::unique_ptr<FakeSessionService> sessionService(const char* name) {
    return std::make_unique<FakeSessionService>(sessionDaemon->address(), name);
  }
  std::unique_ptr<FakeLogind> fakeLogind() {
    return std::make_unique<FakeLogind>(systemDaemon->address());
  }
  tidewell::PowerManagement::Creation create(tidewell::AssertionKind kind,
                                             const std::string& name) {
    return inhibitors->createAssertion(kind, name);
  }

  tidewell::FakePorts ports;
  /// The time for the inhibitors.
  SleepAssertion::Moment now{std::chrono::hours(1)};
  std::unique_ptr<SleepInhibitors> inhibitors;
};

}  // namespace platform::testing
