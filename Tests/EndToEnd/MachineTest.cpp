#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "Platform/Linux/Proc/CpuClock.h"
#include "Platform/Linux/Proc/ProcFileSystem.h"
#include "Tests/EndToEnd/Machine.h"

namespace staylit::testing {
namespace {

/// The other tests rely on this: their machine has nothing but them.
class MachineTest : public Machine {};

TEST_F(MachineTest, HasNoProcessesButTheTestsOwn) {
  const auto pids = platform::ProcFileSystem().pids();
  ASSERT_TRUE(pids);
  // These are the first process, this one, two buses and logind, which may have a child just now.
  EXPECT_GE(pids->size(), 5U);
  EXPECT_LE(pids->size(), 6U);
  EXPECT_EQ(::getppid(), 1);
}

TEST_F(MachineTest, TellsTheCpuTimeOfAProcessByItsNumberOnThisMachine) {
  const ChildProgram worker = workAs("worker", {"cpu"});
  platform::KernelCpuClock clock;
  const auto used = [&] { return clock.nanoseconds(worker.pid()).value_or(0); };
  const std::uint64_t before = used();
  EXPECT_TRUE(eventually([&] { return used() > before + 10'000'000; }, std::chrono::seconds(60)));
}

TEST_F(MachineTest, TellsTheNewestProcessByItsNumberOnThisMachine) {
  const ChildProgram worker = workAs("worker", {"cpu"});
  const auto newest = platform::ProcFileSystem().newestPid();
  ASSERT_TRUE(newest);
  EXPECT_GE(*newest, worker.pid());
  EXPECT_LT(*newest, 100) << "numbers of another namespace";
}

TEST_F(MachineTest, HasNoNetworkButTheLoopback) {
  std::ifstream file("/proc/net/dev");
  std::stringstream text;
  text << file.rdbuf();
  const std::string interfaces = text.str();
  EXPECT_NE(interfaces.find("lo:"), std::string::npos);
  EXPECT_EQ(std::ranges::count(interfaces, ':'), 1) << interfaces;
}

TEST_F(MachineTest, HasNoBatteryNoJournalAndNoUnitOfADesktop) {
  const std::filesystem::path supplies = "/sys/class/power_supply";
  EXPECT_TRUE(!std::filesystem::exists(supplies) || std::filesystem::is_empty(supplies));
  EXPECT_FALSE(std::filesystem::exists("/run/systemd/journal/socket"));
  EXPECT_EQ(platform::ProcFileSystem().read(::getpid(), "cgroup").value_or("").find(".scope"),
            std::string::npos);
}

}  // namespace
}  // namespace staylit::testing
