// Tests holds with the machine's own logind.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "Platform/Linux/Sleep/InhibitorList.h"
#include "Platform/Linux/Sleep/LogindHoldTimes.h"
#include "Platform/Linux/Sleep/LogindList.h"
#include "Platform/Linux/Sleep/LogindLock.h"
#include "Platform/Linux/Sleep/LogindSleepNotifications.h"
#include "Tests/Fakes/FakeMainLoop.h"
#include "Tests/Platform/Sleep/SleepTest.h"
#include "Tests/Platform/Support/RealLogind.h"

namespace platform {
namespace {

using namespace testing;  // NOLINT: the fixture's names

class RealLogindTest : public SleepTest {
 protected:
  void SetUp() override {
    if (const auto obstacle = RealLogind::obstacle()) GTEST_SKIP() << *obstacle;
    SleepTest::SetUp();
    if (IsSkipped()) return;
    logind = std::make_unique<RealLogind>();
    ASSERT_TRUE(eventually([&] { return listLogindInhibitors(*observer()).has_value(); }));
  }
  void TearDown() override {
    SleepTest::TearDown();
    observer_.reset();
  }

  /// The client under test has a connection of its own.
  Bus* observer() {
    if (!observer_) observer_ = std::make_unique<Bus>(*loop, Bus::Kind::system, impatient());
    return observer_.get();
  }

  /// The reasons of all locks, in no particular order.
  std::multiset<std::string> reasons() {
    std::multiset<std::string> result;
    const auto listed = listLogindInhibitors(*observer());
    if (!listed) return {"logind does not answer"};
    for (const ListedInhibitor& inhibitor : *listed)
      result.insert(inhibitor.why);
    return result;
  }

  std::unique_ptr<RealLogind> logind;

 private:
  std::unique_ptr<Bus> observer_;
};

using Reasons = std::multiset<std::string>;

/// Since when logind has its one lock; absent when that is not known.
std::optional<tidewell::WallTime> heldSince(Bus& bus, const RealLogind& logind) {
  const auto listed = listLogindInhibitors(bus);
  if (!listed || listed->size() != 1) return std::nullopt;
  return LogindHoldTimes(logind.state() / "inhibit").take(listed->front());
}

TEST_F(RealLogindTest, ShowsByItsPipesSinceWhenItHasALock) {
  const LogindLock lock =
      takeLogindLock(*observer(), "sleep:idle", "Größe \"a\"\t\\ $b\n", "block");
  ASSERT_TRUE(lock.descriptor);
  const auto since = heldSince(*observer(), *logind);
  ASSERT_TRUE(since);
  EXPECT_LT(std::chrono::abs(std::chrono::system_clock::now() - *since), std::chrono::minutes(1));
}

TEST_F(RealLogindTest, KeepsThePipesWhenItRestarts) {
  const LogindLock lock = takeLogindLock(*observer(), "idle", "a", "block");
  ASSERT_TRUE(lock.descriptor);
  const auto since = heldSince(*observer(), *logind);
  ASSERT_TRUE(since);
  logind->stop();
  EXPECT_TRUE(eventually([&] { return !listLogindInhibitors(*observer()); }));
  logind->start();
  EXPECT_TRUE(eventually([&] { return heldSince(*observer(), *logind) == since; }));
}

TEST_F(RealLogindTest, ListsAHoldUnderItsProcessAndForgetsItOnRelease) {
  const auto creation = create(kSystem, "a");
  ASSERT_EQ(creation.code, 0);
  const auto listed = listLogindInhibitors(*observer());
  ASSERT_TRUE(listed);
  ASSERT_EQ(listed->size(), 1U);
  EXPECT_EQ(listed->front().processIdentifier, ::getpid());
  EXPECT_EQ(listed->front().holder, "Staylit");
  EXPECT_EQ(listed->front().why, "a");
  EXPECT_EQ(listed->front().types, Lines{"PreventUserIdleSystemSleep"});
  EXPECT_EQ(listed->front().level, 255);
  inhibitors->releaseAssertion(creation.id);
  EXPECT_TRUE(eventually([&] { return reasons().empty(); }));
}

/// Looks again and again whether logind's `BlockInhibited` contains idle sleep.
class IdleWatcher {
 public:
  explicit IdleWatcher(const std::string& address) : thread_([this, address] { watch(address); }) {}
  ~IdleWatcher() { stop(); }

  void stop() {
    isStopping_ = true;
    if (thread_.joinable()) thread_.join();
  }

  std::atomic<int> looks = 0;
  std::atomic<int> gaps = 0;
  std::atomic<int> failures = 0;

 private:
  void watch(const std::string& address) {
    sd_bus* bus = nullptr;
    sd_bus_new(&bus);
    sd_bus_set_address(bus, address.c_str());
    sd_bus_set_bus_client(bus, 1);
    sd_bus_start(bus);
    while (!isStopping_) {
      char* blocked = nullptr;
      if (sd_bus_get_property_string(bus, "org.freedesktop.login1", "/org/freedesktop/login1",
                                     "org.freedesktop.login1.Manager", "BlockInhibited", nullptr,
                                     &blocked) < 0) {
        ++failures;
        continue;
      }
      if (std::string(blocked) != "idle") ++gaps;
      std::free(blocked);
      ++looks;
    }
    sd_bus_flush_close_unref(bus);
  }

  std::atomic<bool> isStopping_ = false;
  std::thread thread_;
};

TEST_F(RealLogindTest, IsNeverWithoutTheHoldWhileItIsRenamed) {
  const auto creation = create(kSystem, "0");
  ASSERT_EQ(creation.code, 0);
  IdleWatcher watcher(systemDaemon->address());
  ASSERT_TRUE(eventually([&] { return watcher.looks > 0; }));
  int renames = 0;
  ASSERT_TRUE(eventually([&] {
    now += kPause;
    inhibitors->setAssertionName(creation.id, std::to_string(++renames));
    return renames >= 100 && watcher.looks >= 200;
  }));
  watcher.stop();
  EXPECT_EQ(watcher.gaps, 0);
  EXPECT_EQ(watcher.failures, 0);
  EXPECT_TRUE(eventually([&] { return reasons() == Reasons{std::to_string(renames)}; }));
}

TEST_F(RealLogindTest, HoldsOnceAfterLogindRestarted) {
  ASSERT_EQ(create(kSystem, "a").code, 0);
  logind->stop();
  runBriefly(*loop);
  logind->start();
  EXPECT_TRUE(eventually([&] { return reasons() == Reasons{"a"}; }));
  runBriefly(*loop);
  EXPECT_EQ(reasons(), Reasons{"a"});
}

TEST_F(RealLogindTest, HoldsAgainAfterLogindForgotEverything) {
  ASSERT_EQ(create(kSystem, "a").code, 0);
  ASSERT_EQ(create(kDisplay, "b").code, 0);
  logind->stop();
  logind->forget();
  runBriefly(*loop);
  logind->start();
  EXPECT_TRUE(eventually([&] { return reasons() == (Reasons{"a", "b"}); }));
}

TEST_F(RealLogindTest, HoldsNothingForAProcessThatWasKilled) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);
  ChildProgram child({"unused"}, [&] {
    EventLoop childLoop;
    Bus system(childLoop, Bus::Kind::system);
    Bus session(childLoop, Bus::Kind::session);
    SleepInhibitors holds(system, session, childLoop);
    const bool isHeld = holds.createAssertion(kSystem, "from the child").code == 0;
    if (isHeld && ::write(ends[1], "x", 1) == 1) ::pause();
    return false;
  });
  char ready = 0;
  ASSERT_EQ(::read(ends[0], &ready, 1), 1);
  EXPECT_EQ(reasons(), Reasons{"from the child"});
  child.kill();
  EXPECT_TRUE(eventually([&] { return reasons().empty(); }));
  ::close(ends[0]);
  ::close(ends[1]);
}

/// Closes `descriptor` of this process without the knowledge of its owner.
void closeBehindTheBack(int descriptor) {
  const int nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  ::dup3(nothing, descriptor, O_CLOEXEC);
  ::close(nothing);
}

/// Closes every lock of logind that this process has.
int closeLocksBehindTheBack() {
  std::vector<int> locks;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code error;
    const std::string target = std::filesystem::read_symlink(entry, error);
    if (target.find("/inhibit/") != std::string::npos) {
      locks.push_back(std::stoi(entry.path().filename()));
    }
  }
  for (const int lock : locks)
    closeBehindTheBack(lock);
  return static_cast<int>(locks.size());
}

TEST_F(RealLogindTest, ReadsBackThatALockIsGoneAndTakesItAgain) {
  tidewell::FakeMainLoop timers;
  SleepInhibitors holds(*systemBus, *sessionBus, timers, [this] { return now; });
  ASSERT_EQ(holds.createAssertion(kSystem, "a").code, 0);
  ASSERT_GE(closeLocksBehindTheBack(), 1);
  ASSERT_TRUE(eventually([&] { return reasons().empty(); }));
  now += std::chrono::seconds(3);
  timers.fireTimers();
  EXPECT_TRUE(eventually([&] { return reasons() == Reasons{"a"}; }));
}

TEST_F(RealLogindTest, LeavesAListedLockAlone) {
  tidewell::FakeMainLoop timers;
  SleepInhibitors holds(*systemBus, *sessionBus, timers, [this] { return now; });
  ASSERT_EQ(holds.createAssertion(kSystem, "broken \xFF").code, 0);
  for (int reading = 0; reading < 3; ++reading) {
    now += std::chrono::seconds(60);
    timers.fireTimers();
    runBriefly(*loop);
  }
  EXPECT_EQ(ports.log.lines(), Lines{});
}

TEST_F(RealLogindTest, AcceptsAReasonThatWasBrokenText) {
  ASSERT_EQ(create(kSystem, "\xFF").code, 0);
  EXPECT_EQ(reasons(), Reasons{"\xEF\xBF\xBD"});
}

TEST_F(RealLogindTest, GrantsTheLockThatDelaysSleepAndDoesNotListItAsOneThatPreventsSleep) {
  LogindSleepNotifications notifications(*systemBus, *loop);
  notifications.observe([] {}, [] {});
  const auto listed = listLogindInhibitors(*observer());
  ASSERT_TRUE(listed);
  ASSERT_EQ(listed->size(), 1U);
  EXPECT_EQ(listed->front().types, Lines{"PreventSystemSleep"});
  EXPECT_EQ(listed->front().level, 0);
  EXPECT_EQ(listed->front().holder, "Staylit");
}

TEST_F(RealLogindTest, ShowsTheHoldAmongTheAssertionsOfTheProcess) {
  ASSERT_EQ(create(kSystem, "a").code, 0);
  InhibitorList list(*observer(), *sessionBus, std::make_shared<NamedHolders>());
  const auto holders = list.assertionsByProcess();
  ASSERT_TRUE(holders);
  ASSERT_EQ(holders->size(), 1U);
  EXPECT_EQ(holders->front().process, list.ownProcessIdentifier());
}

}  // namespace
}  // namespace platform
