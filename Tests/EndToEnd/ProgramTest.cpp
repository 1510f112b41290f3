#include <pty.h>

#include <poll.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <string>

#include "Tests/EndToEnd/Machine.h"

namespace staylit::testing {
namespace {

using namespace std::chrono_literals;

/// Short times, and thresholds that only an application with a CPU floor of its own can reach.
std::string quickSettings(const std::string& ignored = "") {
  return "graceSeconds = 30\n"
         "sustainSeconds = 1\n"
         "diskThresholdKBps = 1e9\n"
         "netThresholdKBps = 1e9\n"
         "cpuThresholdPercent = 1e9\n"
         "ignoredApps = [" +
         ignored + "]\n";
}
/// A name that has such a floor. The catalogue calls it "Aider".
constexpr const char* kWorker = "aider";

class ProgramTest : public Machine {};

TEST_F(ProgramTest, HoldsWhileAWorkerWorksWaitsForTheGraceAndLetsGo) {
  writeSettings(quickSettings());
  ChildProgram worker = workAs(kWorker, {"cpu"});
  const ChildProgram staylit = start();
  EXPECT_TRUE(eventually([this] { return holdReason() == "Aider is working"; }, 60s))
      << holdReason();
  worker.kill();
  EXPECT_TRUE(eventually([this] { return holdReason() == "waiting for work to resume"; }, 30s))
      << holdReason();
  EXPECT_TRUE(eventually([this] { return holdReason().empty(); }, 90s)) << holdReason();
  EXPECT_EQ(output(), "");  // Standard output is no terminal.
}

TEST_F(ProgramTest, LeavesNothingHeldWhenItIsKilled) {
  ChildProgram staylit = start();
  ASSERT_TRUE(eventually([this] { return !holdReason().empty(); }, 20s));
  staylit.kill();
  EXPECT_TRUE(eventually([this] { return holdReason().empty(); }, 20s));
}

class SignalTest : public ProgramTest, public ::testing::WithParamInterface<int> {};

TEST_P(SignalTest, EndsTheProgramInOrderAndReleasesTheHold) {
  const ChildProgram staylit = start();
  ASSERT_TRUE(eventually([this] { return !holdReason().empty(); }, 20s));
  ::kill(staylit.pid(), GetParam());
  EXPECT_EQ(wait(staylit), 0);
  EXPECT_TRUE(eventually([this] { return holdReason().empty(); }, 20s));
}

INSTANTIATE_TEST_SUITE_P(Termination, SignalTest, ::testing::Values(SIGTERM, SIGINT, SIGHUP));

TEST_F(ProgramTest, FollowsASettingThatAPersonEdits) {
  writeSettings(quickSettings());
  const ChildProgram worker = workAs(kWorker, {"cpu"});
  const ChildProgram staylit = start();
  ASSERT_TRUE(eventually([this] { return holdReason() == "Aider is working"; }, 60s))
      << holdReason();
  writeSettings(quickSettings("\"aider\""));
  EXPECT_TRUE(eventually([this] { return holdReason() == "waiting for work to resume"; }, 30s))
      << holdReason();
}

TEST_F(ProgramTest, HonoursTheInhibitorOfAnotherProgram) {
  writeSettings("graceSeconds = 30\ncpuThresholdPercent = 1e9\ndiskThresholdKBps = 1e9\n");
  const ChildProgram staylit = start();
  ASSERT_TRUE(eventually([this] { return holdReason() == "waiting for work to resume"; }, 20s));
  const ChildProgram other({"systemd-inhibit", "--what=idle", "--why=testing", "sleep", "100"});
  EXPECT_TRUE(eventually([this] { return holdReason() == "systemd-inhibit is working"; }, 30s))
      << holdReason();
}

TEST_F(ProgramTest, LetsGoThoughAnotherStaylitHoldsOnTheSameMachine) {
  writeSettings(quickSettings());
  ChildProgram worker = workAs(kWorker, {"cpu"});
  const ChildProgram first = start();
  // The second one has neither session bus nor runtime folder in common, as another user's has not.
  const ScopedEnvironment session("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/session");
  const ScopedEnvironment runtime("XDG_RUNTIME_DIR", "/nonexistent/runtime");
  const ChildProgram second = start();
  const std::vector<std::string> both{"Aider is working", "Aider is working"};
  EXPECT_TRUE(eventually([&] { return holdReasons() == both; }, 60s)) << holdReason();
  worker.kill();
  EXPECT_TRUE(eventually([this] { return holdReasons().empty(); }, 90s)) << holdReason();
}

TEST_F(ProgramTest, TakesTheHoldAgainWhenLogindRestarts) {
  const ChildProgram staylit = start();
  ASSERT_TRUE(eventually([this] { return !holdReason().empty(); }, 20s));
  logind->stop();
  logind->forget();
  logind->start();
  EXPECT_TRUE(eventually([this] { return !holdReason().empty(); }, 60s));
}

TEST_F(ProgramTest, RunsWithoutAnyBusAndSaysOnceThatItsHoldsAreRecordedOnly) {
  const ScopedEnvironment system("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/system");
  const ScopedEnvironment session("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/session");
  const ChildProgram staylit = start();
  const std::string said = "holds are recorded only";
  ASSERT_TRUE(eventually(
      [&] { return output("err").find("waiting for work to resume") != std::string::npos; }, 20s));
  const std::string log = output("err");
  EXPECT_NE(log.find(said), std::string::npos) << log;
  EXPECT_EQ(log.find(said), log.rfind(said)) << log;
  ::kill(staylit.pid(), SIGTERM);
  EXPECT_EQ(wait(staylit), 0);
}

TEST_F(ProgramTest, TellsAPersonAtATerminalWhatItDoes) {
  writeSettings(quickSettings());
  int terminal = -1;
  const pid_t pid = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (pid == 0) {
    execl(STAYLIT_PROGRAM, STAYLIT_PROGRAM, nullptr);
    _exit(127);
  }
  std::string seen;
  const auto sees = [&](const std::string& wanted) {
    return eventually(
        [&] {
          std::array<char, 4096> buffer{};
          pollfd ready{terminal, POLLIN, 0};
          if (::poll(&ready, 1, 0) > 0) {
            const ssize_t count = ::read(terminal, buffer.data(), buffer.size());
            if (count > 0) seen.append(buffer.data(), static_cast<std::size_t>(count));
          }
          return seen.find(wanted) != std::string::npos;
        },
        40s);
  };
  EXPECT_TRUE(sees("  Work stopped — releasing in 30s\r\n")) << seen;
  ChildProgram worker = workAs(kWorker, {"cpu"});
  EXPECT_TRUE(sees("  Awake for Aider  |  Aider: ")) << seen;
  EXPECT_TRUE(sees("% CPU")) << seen;
  ::kill(pid, SIGTERM);
  int status = 0;
  ::waitpid(pid, &status, 0);
  ::close(terminal);
  EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace staylit::testing
