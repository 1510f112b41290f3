#include <chrono>
#include <csignal>
#include <string>

#include "Tests/EndToEnd/Machine.h"

namespace staylit::testing {
namespace {

using namespace std::chrono_literals;

class DoctorTest : public Machine {
 protected:
  int examine() { return wait(start({"--doctor"})); }
  [[nodiscard]] bool says(const std::string& text) const {
    return output().find(text) != std::string::npos;
  }
};

TEST_F(DoctorTest, TriesAHoldAtLogindAndGivesItBack) {
  EXPECT_EQ(examine(), 1) << output();
  EXPECT_TRUE(says("A hold that was tried is granted by org.freedesktop.login1, and listed"))
      << output();
  EXPECT_TRUE(says("No Staylit runs in this session.")) << output();
  EXPECT_TRUE(says("\nFor a report, paste this:\n\n    Staylit ")) << output();
  EXPECT_TRUE(says("    hold at org.freedesktop.login1: listed\n")) << output();
  EXPECT_TRUE(eventually([this] { return inhibitors()->empty(); }, 20s));
}

TEST_F(DoctorTest, LeavesTheStaylitThatRunsAlone) {
  const ChildProgram staylit = start({"--background"});
  ASSERT_TRUE(eventually([this] { return !holdReason().empty(); }, 20s));
  examine();
  EXPECT_TRUE(says(" Staylit runs.\n")) << output();
  EXPECT_TRUE(says("    hold at org.freedesktop.login1: listed\n")) << output();
  EXPECT_EQ(holdReasons().size(), 1U);
  ::kill(staylit.pid(), SIGTERM);
  EXPECT_EQ(wait(staylit), 0);
}

TEST_F(DoctorTest, NamesTheLinesOfTheSettingsThatAreWrong) {
  const std::string text = "graceSeconds = 60\nnonsense\nsecretKey = 1\nkeepScreenOn = \"yes\"\n";
  writeSettings(text);
  EXPECT_EQ(examine(), 1);
  EXPECT_TRUE(says("Settings, line 2: it cannot be read")) << output();
  EXPECT_TRUE(says("Settings, line 3: nobody knows the key \"secretKey\", and it does not count\n"))
      << output();
  EXPECT_TRUE(says("Settings, line 4: \"keepScreenOn\" wants true or false; true counts\n"))
      << output();
  EXPECT_EQ(settings(), text);
  // What is to be pasted names nothing of it.
  const std::string report = output().substr(output().find("For a report"));
  EXPECT_EQ(report.find("secretKey"), std::string::npos) << report;
}

TEST_F(DoctorTest, DrawsNoSignsWhereTheLocaleHasNone) {
  const ScopedEnvironment all("LC_ALL", "C");
  examine();
  EXPECT_EQ(output().find("\xE2\x9C"), std::string::npos) << output();
  const ScopedEnvironment utf8("LC_ALL", "C.UTF-8");
  examine();
  EXPECT_TRUE(says("✓ ")) << output();
}

TEST_F(DoctorTest, SaysFirstThatNothingCanBeHeldWithoutAnyBus) {
  const ScopedEnvironment system("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/system");
  const ScopedEnvironment session("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/session");
  EXPECT_EQ(examine(), 2);
  EXPECT_TRUE(output().starts_with("Nothing can be held here: neither logind nor")) << output();
}

TEST_F(DoctorTest, SaysThatNothingCanBeHeldWhereLogindHangs) {
  logind->freeze();
  EXPECT_EQ(examine(), 2);
  logind->thaw();
  EXPECT_TRUE(
      output().starts_with("Nothing can be held here: the service that would have to grant "
                           "it hangs.\n"))
      << output();
  EXPECT_TRUE(says("To do: As root: systemctl restart systemd-logind.\n")) << output();
  EXPECT_FALSE(says(", start systemd-logind")) << output();
}

}  // namespace
}  // namespace staylit::testing
