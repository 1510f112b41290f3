#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "Tests/EndToEnd/Machine.h"

namespace staylit::testing {
namespace {

using namespace std::chrono_literals;

class HoldsTest : public Machine {
 protected:
  struct Told {
    int status;
    std::string output;
  };
  Told holds(std::vector<std::string> more = {}) {
    more.insert(more.begin(), "--holds");
    const ChildProgram program = start(more);
    const int status = wait(program);
    return {status, output()};
  }
  static bool has(const Told& told, const std::string& text) {
    return told.output.find(text) != std::string::npos;
  }
};

TEST_F(HoldsTest, ListsNothingWhereNothingIsHeld) {
  const Told told = holds();
  EXPECT_EQ(told.status, 1);
  EXPECT_TRUE(has(told, "\nHolds (0):\n  none\n")) << told.output;
}

TEST_F(HoldsTest, ListsAHoldWithItsOwnerAndWhatThatDoes) {
  const ChildProgram other(
      {"systemd-inhibit", "--what=idle", "--who=mpv", "--why=testing", "sleep", "1000"});
  ASSERT_TRUE(eventually([this] { return inhibitors()->size() == 1; }, 20s));
  const std::string marked = "\n! mpv — testing\n    Keeps off:  sleep of the unused machine\n";
  ASSERT_TRUE(eventually([&] { return has(holds(), marked); }, 60s)) << output();
  const Told told = holds();
  EXPECT_EQ(told.status, 0);
  EXPECT_TRUE(has(told, "    It does:    quiet ")) << told.output;
  EXPECT_TRUE(has(told, "process " + std::to_string(other.pid()) + " (systemd-inhibit) of root\n"))
      << told.output;
}

TEST_F(HoldsTest, SeesTheWorkOfACommandThatAHoldIsFor) {
  const ChildProgram other({"systemd-inhibit", "--what=idle", "--who=make", "--why=testing", "sh",
                            "-c", "while :; do :; done"});
  ASSERT_TRUE(eventually([this] { return inhibitors()->size() == 1; }, 20s));
  EXPECT_TRUE(eventually([&] { return has(holds(), "% CPU\n"); }, 60s)) << output();
  EXPECT_TRUE(has(holds(), "\n  make — testing\n")) << output();
}

TEST_F(HoldsTest, ListsTheHoldOfTheStaylitThatRuns) {
  const ChildProgram staylit = start();
  ASSERT_TRUE(eventually([this] { return !holdReason().empty(); }, 20s));
  const Told told = holds({"--json"});
  EXPECT_EQ(told.status, 0);
  EXPECT_TRUE(has(told, R"("owner":"Staylit","reason":"waiting for work to resume")"))
      << told.output;
  EXPECT_EQ(std::count(told.output.begin(), told.output.end(), '\n'), 1) << told.output;
}

TEST_F(HoldsTest, ChangesNothing) {
  const std::string before = settings();
  holds();
  EXPECT_EQ(settings(), before);
  EXPECT_TRUE(inhibitors()->empty());
}

TEST_F(HoldsTest, EndsInTroubleWithoutAnyBus) {
  const ScopedEnvironment system("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/system");
  const ScopedEnvironment session("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/session");
  const Told told = holds();
  EXPECT_EQ(told.status, 2);
  EXPECT_TRUE(has(told, "cannot be told: neither logind nor a desktop's power management answers."))
      << told.output;
}

}  // namespace
}  // namespace staylit::testing
