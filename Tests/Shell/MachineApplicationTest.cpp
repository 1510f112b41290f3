#include "Staylit/Desktop/Machine/MachineApplication.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Staylit/Desktop/Machine/MachineUserInterface.h"
#include "Staylit/Desktop/Session/ApplicationService.h"
#include "Staylit/Desktop/Status/StatusMessages.h"
#include "Staylit/StatusReporter.h"
#include "Staylit/StaylitEngine.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/Stranger.h"

namespace staylit {
namespace {

using platform::testing::PrivateBus;
using platform::testing::Stranger;
using Texts = std::vector<std::string>;

/// Notes what the application tells it, and does something when it has started.
class NotingDelegate : public ApplicationDelegate {
 public:
  explicit NotingDelegate(std::function<void()> started) : started_(std::move(started)) {}

  void applicationDidFinishLaunching() override {
    told.emplace_back("launched");
    started_();
  }
  void applicationWillTerminate() override { told.emplace_back("terminates"); }
  void applicationShouldHandleReopen() override { told.emplace_back("reopened"); }

  Texts told;

 private:
  std::function<void()> started_;
};

class MachineApplicationTest : public platform::testing::BusTest {
 protected:
  MachineApplicationTest() { systemPolicy = PrivateBus::Policy::everybody; }

  void SetUp() override {
    BusTest::SetUp();
    if (!IsSkipped()) buses.emplace(*loop, platform::Buses::Serving::machine);
  }
  void TearDown() override { buses.reset(); }

  [[nodiscard]] bool isNameTaken() const {
    return systemBus->nameStatus(ApplicationService::kName).isOwned();
  }

  std::optional<platform::Buses> buses;
};

TEST_F(MachineApplicationTest, HasItsNameOnTheSystemBusUntilItEnds) {
  bool wasTaken = false;
  std::unique_ptr<tidewell::RepeatingTimer> timer;
  NotingDelegate delegate([&] {
    timer = loop->scheduleRepeating(tidewell::Seconds(0.01), [&] {
      wasTaken = isNameTaken();
      if (wasTaken) loop->stop();
    });
  });
  MachineApplication(*loop, buses->system).run(delegate);
  EXPECT_TRUE(wasTaken);
  EXPECT_EQ(delegate.told, (Texts{"launched", "terminates"}));
}

TEST_F(MachineApplicationTest, EndsWhereAnotherServesTheMachine) {
  const platform::testing::BusService first(systemDaemon->address(), {ApplicationService::kName},
                                            [](sd_bus_message*) {});
  NotingDelegate delegate([&] { loop->stop(); });
  MachineApplication(*loop, buses->system).run(delegate);
  EXPECT_EQ(delegate.told, Texts());
}

TEST_F(MachineApplicationTest, WorksWithoutASystemBus) {
  systemDaemon->stop();
  NotingDelegate delegate([&] { loop->stop(); });
  MachineApplication(*loop, buses->system).run(delegate);
  EXPECT_EQ(delegate.told, (Texts{"launched", "terminates"}));
}

TEST_F(MachineApplicationTest, AsksNoSessionBus) {
  EXPECT_EQ(buses->session.connect(), -ENOMEDIUM);
  EXPECT_EQ(buses->session.handle(), nullptr);
}

TEST_F(MachineApplicationTest, IsAskedForByItsOption) {
  EXPECT_TRUE(MachineApplication::isAskedFor({"staylit", "--system"}));
  EXPECT_FALSE(MachineApplication::isAskedFor({"staylit", "--background"}));
}

/// The status of an engine over fakes, as the program of the machine offers it.
class MachineStatusTest : public MachineApplicationTest {
 protected:
  void SetUp() override {
    if (const auto obstacle = Stranger::obstacle()) GTEST_SKIP() << *obstacle;
    MachineApplicationTest::SetUp();
    if (IsSkipped()) return;
    ASSERT_EQ(buses->system.connect(), 0);
    userInterface.emplace(*loop, buses->system);
    status = userInterface->offerStatus(reporter);
    sd_bus_request_name(buses->system.handle(), ApplicationService::kName, 0);
  }
  void TearDown() override {
    status.reset();
    MachineApplicationTest::TearDown();
  }

  /// What another user's call ends with: 0, or an errno.
  int strangerGets(const std::function<int(sd_bus*)>& call) {
    constexpr int kNoBus = 255;
    const pid_t child = ::fork();
    if (child == 0) {
      sd_bus* bus = Stranger::become() ? Stranger::connect(systemDaemon->address()) : nullptr;
      ::_exit(bus == nullptr ? kNoBus : -std::min(0, call(bus)));
    }
    int result = -1;
    EXPECT_TRUE(eventually([&] { return ::waitpid(child, &result, WNOHANG) == child; }));
    return WIFEXITED(result) ? WEXITSTATUS(result) : -1;
  }

  tidewell::FakePorts fakes;
  StaylitEngine engine{fakes.ports};
  StatusReporter reporter{engine, fakes.ports};
  std::optional<MachineUserInterface> userInterface;
  std::unique_ptr<StatusService> status;
};

TEST_F(MachineStatusTest, EverybodyMayReadIt) {
  EXPECT_EQ(strangerGets([](sd_bus* bus) {
              char* state = nullptr;
              return sd_bus_get_property_string(bus, ApplicationService::kName,
                                                StatusInterface::kPath, StatusInterface::kName,
                                                "State", nullptr, &state);
            }),
            0);
}

TEST_F(MachineStatusTest, NobodyMayChangeIt) {
  EXPECT_EQ(strangerGets([](sd_bus* bus) {
              return sd_bus_set_property(bus, ApplicationService::kName, StatusInterface::kPath,
                                         StatusInterface::kName, "State", nullptr, "s", "paused");
            }),
            EROFS);
}

TEST_F(MachineStatusTest, NobodyMayEndTheProgram) {
  EXPECT_EQ(strangerGets([](sd_bus* bus) {
              return sd_bus_call_method(bus, ApplicationService::kName, ApplicationService::kPath,
                                        ApplicationService::kInterface, "ActivateAction", nullptr,
                                        nullptr, "sava{sv}", "quit", 0, 0);
            }),
            EBADR)
      << "there is no such object";
}

TEST_F(MachineStatusTest, ShowsNothing) {
  EXPECT_TRUE(userInterface->visibleFrames().empty());
}

}  // namespace
}  // namespace staylit
