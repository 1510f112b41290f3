#include "Tests/Platform/Sleep/PowerManagementContract.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/Sleep/SleepInhibitors.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Platform/Sleep/SleepTest.h"
#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/FakeLogind.h"
#include "Tests/Platform/Support/FakeSessionService.h"

namespace platform {
namespace {

/// A machine of which logind alone knows whether it may sleep.
class LogindMachine : public testing::BusMachine {
 public:
  LogindMachine() {
    if (missing() != nullptr) return;
    logind_.emplace(systemDaemon->address());
    inhibitors_ =
        std::make_unique<SleepInhibitors>(*systemBus, *sessionBus, *loop, [this] { return now_; });
  }

  SleepInhibitors& power() { return *inhibitors_; }
  void refuse(bool refuses) { logind_->refuses = refuses; }
  void pass() { now_ += testing::kPause; }

  std::vector<std::string> held() {
    std::vector<std::string> names;
    for (const std::string& lock : logind_->held()) {
      constexpr std::string_view kBefore = "idle|Staylit|";
      constexpr std::string_view kBehind = "|block";
      names.push_back(lock.substr(kBefore.size(), lock.size() - kBefore.size() - kBehind.size()));
    }
    return names;
  }

 private:
  tidewell::FakePorts ports_;
  SleepAssertion::Moment now_{std::chrono::hours(1)};
  std::optional<testing::FakeLogind> logind_;
  std::unique_ptr<SleepInhibitors> inhibitors_;
};

/// A machine with a desktop that decides as well.
class GnomeMachine : public LogindMachine {
 public:
  GnomeMachine() {
    if (missing() == nullptr) gnome_.emplace(sessionDaemon->address(), testing::kGnome);
  }

  void refuse(bool refuses) {
    LogindMachine::refuse(refuses);
    gnome_->refuses = refuses;
  }
  /// What both services have.
  std::vector<std::string> held() {
    const std::vector<std::string> ofLogind = LogindMachine::held();
    return gnome_->held() == ofLogind ? ofLogind : std::vector<std::string>{"they differ"};
  }

 private:
  std::optional<testing::FakeSessionService> gnome_;
};

class FakePowerMachine {
 public:
  static const char* missing() { return nullptr; }
  tidewell::FakePowerManagement& power() { return power_; }
  void refuse(bool refuses) { power_.systemFailure = refuses ? 5 : 0; }
  static void pass() {}
  static bool settles(const std::function<bool()>& condition) { return condition(); }
  std::vector<std::string> held() { return power_.liveNames(); }

 private:
  tidewell::FakePowerManagement power_;
};

using Machines = ::testing::Types<FakePowerMachine, LogindMachine, GnomeMachine>;
INSTANTIATE_TYPED_TEST_SUITE_P(FakeLogindAndGnome, PowerManagementContract, Machines);

}  // namespace
}  // namespace platform
