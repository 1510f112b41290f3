#include "Staylit/Desktop/Status/StatusObject.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Staylit/Desktop/Session/ApplicationService.h"
#include "Staylit/Desktop/Status/StatusMessages.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Shell/Support/Host.h"

namespace staylit {
namespace {

using namespace std::chrono_literals;
using testing::Host;
using Texts = std::vector<std::string>;

constexpr const char* kProperties = "org.freedesktop.DBus.Properties";

/// An engine over fakes, whose clock begins on 17 May 2024 at 09:00:00 UTC, with its status on a
/// private bus.
class StatusObjectTest : public platform::testing::BusTest {
 protected:
  void SetUp() override {
    BusTest::SetUp();
    if (IsSkipped()) return;
    fakes.defaults.stored["sustainSeconds"] = std::int64_t{4};
    fakes.processes.add(10, "/opt/A");
    fakes.processes.add(11, "/opt/B");
    service.emplace(*loop, *sessionBus, [](MenuItem::Action) { return std::string(); });
    ASSERT_EQ(service->claim({}, [] {}), ApplicationService::Claim::first);
    status.emplace(*sessionBus, reporter);
    host = std::make_unique<Host>(*loop, ApplicationService::kName);
  }
  void TearDown() override {
    host.reset();
    status.reset();
    service.reset();
  }

  /// Two seconds later, for all of which the two applications used these shares of a core.
  void tickWith(double percentOfA, double percentOfB) {
    useCPU(10, percentOfA);
    useCPU(11, percentOfB);
    fakes.clock.advance(2s);
    tick();
  }
  void tick() {
    engine.tick();
    fakes.mainLoop.runPosted();
  }
  /// The first works for long enough, the second not yet.
  void work() {
    fakes.power.grants = {{"org.example.Sleep", fakes.clock.now()}, {"org.example.New", {}}};
    tick();
    tickWith(80, 0);
    tickWith(80, 0);
    tickWith(80, 40);
  }

  std::string property(const char* name) {
    return host->property(StatusInterface::kPath, StatusInterface::kName, name);
  }
  void listen() {
    // What was sent before is gone by then.
    platform::testing::handleEverything(*loop, *sessionBus);
    host->listen(StatusInterface::kPath, StatusInterface::kName, {"Changed"});
    host->listen(StatusInterface::kPath, kProperties, {"PropertiesChanged"});
  }

  tidewell::FakePorts fakes;
  StaylitEngine engine{fakes.ports};
  StatusReporter reporter{engine, fakes.ports};
  std::optional<ApplicationService> service;
  std::optional<StatusObject> status;
  std::unique_ptr<Host> host;

 private:
  void useCPU(std::int32_t pid, double percent) {
    fakes.processes.at(pid).usage.userTime += static_cast<std::uint64_t>(percent * 20'000'000);
  }
};

TEST_F(StatusObjectTest, TellsAllAboutAHold) {
  fakes.powerSources.setBattery(80);
  work();
  EXPECT_EQ(property("State"), "'holding'");
  EXPECT_EQ(property("Summary"), "'Awake for A'");
  EXPECT_EQ(property("Held"), "true");
  EXPECT_EQ(property("Reason"), "'A is working'");
  EXPECT_EQ(property("Since"), "1715936406");
  EXPECT_EQ(property("ReleasesIn"), "0");
  EXPECT_EQ(property("Names"), "['A']");
  EXPECT_EQ(property("Services"), "[('org.example.Sleep' 1715936400) ('org.example.New' 0)]");
  EXPECT_EQ(property("Busy"), "[('A' 'A' '80% CPU' 80 0 0 4)]");
  EXPECT_EQ(property("Candidates"), "[('B' 'B' '40% CPU' 40 0 0 0)]");
  EXPECT_EQ(property("SustainSeconds"), "4");
  EXPECT_EQ(property("Asking"), "[]");
  EXPECT_EQ(property("OnAC"), "false");
  EXPECT_EQ(property("HasBattery"), "true");
  EXPECT_EQ(property("BatteryPercent"), "80");
  EXPECT_EQ(property("LowPowerMode"), "false");
}

TEST_F(StatusObjectTest, TellsOfTheGracePeriodWhenItWillEnd) {
  tick();
  EXPECT_EQ(property("State"), "'winding'");
  EXPECT_EQ(property("ReleasesIn"), "120");
}

TEST_F(StatusObjectTest, SendsOnlyValidText) {
  fakes.processes.at(10).path = "/opt/A\xFF\x1B";
  work();
  EXPECT_EQ(property("Summary"), "'Awake for A\uFFFD\uFFFD'");
  EXPECT_EQ(property("Reason"), "'A\uFFFD\uFFFD is working'");
  EXPECT_EQ(property("Names"), "['A\uFFFD\uFFFD']");
  EXPECT_EQ(property("Busy"), "[('A\uFFFD\uFFFD' 'A\uFFFD\uFFFD' '80% CPU' 80 0 0 4)]");
}

TEST_F(StatusObjectTest, IsReadAsItIsWritten) {
  fakes.powerSources.setBattery(80);
  work();
  StatusReport read;
  bool isRead = false;
  const platform::BusSlot slot = host->bus().callAsync(
      {ApplicationService::kName, StatusInterface::kPath, kProperties, "GetAll"},
      [](sd_bus_message* call) { return sd_bus_message_append(call, "s", StatusInterface::kName); },
      [&](const platform::BusReply& reply) {
        isRead = reply && readStatus(reply.message.get(), read);
      });
  ASSERT_TRUE(eventually([&] { return isRead; }));
  StatusReport written = reporter.report();
  for (auto* apps : {&written.busy, &written.candidates, &read.busy, &read.candidates}) {
    for (tidewell::BusyApp& app : *apps) {
      app.category = tidewell::AppCategory::other;  // Nobody is told of the category.
    }
  }
  const auto now = fakes.clock.wallTime() + 10s;
  EXPECT_EQ(read.json(now), written.json(now));
  EXPECT_EQ(read.lines(now), written.lines(now));
}

TEST_F(StatusObjectTest, TellsWhenAPauseEnds) {
  EXPECT_EQ(property("ResumesAt"), "0");
  PauseControl pause(engine, fakes.ports);
  reporter.tellEndOf(pause);
  pause.pause(2h);
  // 11:00 UTC on the day on which the fake clock begins.
  EXPECT_EQ(property("ResumesAt"), "1715943600");
}

TEST_F(StatusObjectTest, DescribesItself) {
  const std::string description =
      host->call(StatusInterface::kPath, "org.freedesktop.DBus.Introspectable", "Introspect");
  const auto begin = description.find("<interface name=\"com.staylit.Status1\">");
  ASSERT_NE(begin, std::string::npos) << description;
  const std::string own = description.substr(begin);
  EXPECT_EQ(own.find("<method"), std::string::npos) << "nothing can be done through it";
  EXPECT_EQ(own.find("access=\"readwrite\""), std::string::npos);
  EXPECT_NE(own.find("<property name=\"Busy\" type=\"a(sssdddd)\" access=\"read\">"),
            std::string::npos)
      << own;
  EXPECT_NE(own.find("<signal name=\"Changed\">"), std::string::npos) << own;
}

TEST_F(StatusObjectTest, CannotBeChanged) {
  for (const char* name : {"State", "Held", "Reason", "Summary"}) {
    EXPECT_EQ(host->call(StatusInterface::kPath, kProperties, "Set",
                         [name](sd_bus_message* call) {
                           return sd_bus_message_append(call, "ssv", StatusInterface::kName, name,
                                                        "s", "x");
                         }),
              "<org.freedesktop.DBus.Error.PropertyReadOnly>")
        << name;
  }
}

TEST_F(StatusObjectTest, TellsOfAChange) {
  tick();
  listen();
  fakes.clock.advance(5s);
  engine.setPaused(true);
  fakes.mainLoop.runPosted();
  ASSERT_TRUE(eventually([&] { return host->signals.size() == 2; }));
  EXPECT_EQ(
      host->signals[0],
      "PropertiesChanged 'com.staylit.Status1' ['State' 'paused' 'Held' false 'Reason' '' "
      "'Since' 1715936405 'Names' [] 'OnAC' true 'HasBattery' false 'LowPowerMode' false] []");
  EXPECT_EQ(host->signals[1], "Changed 'paused' 'Paused'");
}

TEST_F(StatusObjectTest, SaysNothingWhileNothingChangesButFigures) {
  tick();
  listen();
  for (int looks = 0; looks < 20; ++looks)
    tickWith(looks % 2 == 0 ? 80 : 0, 0);
  platform::testing::handleEverything(*loop, host->bus());
  EXPECT_EQ(host->signals, Texts{});
}

TEST_F(StatusObjectTest, IsThereAgainOnTheNextBus) {
  sessionDaemon->stop();
  ASSERT_TRUE(eventually([&] { return sessionBus->handle() == nullptr; }));
  sessionDaemon->start();
  EXPECT_TRUE(eventually([&] {
    host = std::make_unique<Host>(*loop, ApplicationService::kName);
    return property("State") == "'idle'";
  }));
}

}  // namespace
}  // namespace staylit
