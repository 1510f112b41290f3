#include "Platform/Linux/Sleep/SleepDeciders.h"

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Platform/Linux/Sleep/DesktopSetting.h"
#include "Platform/Linux/Sleep/PowerManagementList.h"
#include "Platform/Posix/Tasks/SpawnedTaskLauncher.h"
#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/FakeSettingsTool.h"
#include "Tests/Platform/Support/FakeXServer.h"
#include "Tests/Platform/Support/FakeXfconf.h"
#include "Tests/Platform/Support/ScopedEnvironment.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

using namespace testing;  // NOLINT: the fixture's names
using Action = SleepDecider::Action;
using Lines = std::vector<std::string>;

TEST(DesktopSetting, ReadsNumbersAsTheToolPrintsThem) {
  EXPECT_EQ(parseSettingNumber("1200\n"), 1200);
  EXPECT_EQ(parseSettingNumber("uint32 5\n"), 5);
  EXPECT_EQ(parseSettingNumber("-1"), -1);
  for (const char* other : {"", "\n", "'5'", "uint32", "5.0", "99999999999999999999"})
    EXPECT_EQ(parseSettingNumber(other), std::nullopt) << other;
}

TEST(DesktopSetting, ReadsTextsAsTheToolPrintsThem) {
  EXPECT_EQ(parseSettingText("'suspend'\n"), "suspend");
  EXPECT_EQ(parseSettingText("''"), "");
  EXPECT_EQ(parseSettingText("'a\x1B[2J'"), "a\uFFFD[2J");
  for (const char* other : {"", "'", "suspend", "\"it's\"", "'a\\'b'", "5"})
    EXPECT_EQ(parseSettingText(other), std::nullopt) << other;
}

/// A service that has a name and says nothing.
std::unique_ptr<BusService> named(const std::string& address, const std::string& name) {
  return std::make_unique<BusService>(
      address, std::vector<std::string>{name}, [](sd_bus_message* call) {
        sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_METHOD, "unknown");
      });
}

class SleepDecidersTest : public BusTest {
 protected:
  /// The path of a tool with these settings, until the next one.
  std::string tool(const std::map<std::string, std::string>& settings) {
    return settingsTool.emplace(settings).path();
  }

  MachineSleep find(const std::string& path = "/nonexistent/tool") {
    SpawnedTaskLauncher launcher([](int) { return std::string(); });
    return findSleepDeciders(
        *systemBus, *sessionBus, launcher, [this] { return xServer; }, path);
  }
  /// Each as "name action seconds setting".
  static Lines lines(const MachineSleep& machine) {
    Lines result;
    for (const SleepDecider& decider : machine.deciders) {
      const char* action = decider.action == Action::sleeps    ? "sleeps"
                           : decider.action == Action::nothing ? "nothing"
                                                               : "unknown";
      const std::string after =
          decider.after ? std::to_string(static_cast<int>(decider.after->count())) : "-";
      result.push_back(decider.name + " " + action + " " + after + " " + decider.setting);
    }
    return result;
  }

  TemporaryFolder folder;
  std::optional<FakeSettingsTool> settingsTool;
  std::optional<XAddress> xServer;
};

TEST_F(SleepDecidersTest, AreNoneWhereThereIsNoService) {
  const MachineSleep machine = find();
  EXPECT_FALSE(machine.hasLogind);
  EXPECT_EQ(machine.canSuspend, "");
  EXPECT_TRUE(machine.deciders.empty());
}

TEST_F(SleepDecidersTest, AreNoneWithoutABus) {
  systemDaemon->stop();
  sessionDaemon->stop();
  EXPECT_TRUE(find().deciders.empty());
}

TEST_F(SleepDecidersTest, ReadLogindsOwnSettings) {
  FakeLogind logind(systemDaemon->address());
  logind.setMachine({"suspend", 900'000'000, true, "challenge"});
  const MachineSleep machine = find();
  EXPECT_TRUE(machine.hasLogind);
  EXPECT_EQ(machine.canSuspend, "challenge");
  EXPECT_EQ(lines(machine), Lines{"logind sleeps 900 IdleAction is \"suspend\""});
  EXPECT_EQ(machine.deciders.front().heeds, Lines{"org.freedesktop.login1"});
}

TEST_F(SleepDecidersTest, TakeNoOtherActionOfLogindForSleep) {
  FakeLogind logind(systemDaemon->address());
  for (const std::string action : {"ignore", "lock", "poweroff"}) {
    logind.setMachine({action, 900'000'000, true, "yes"});
    EXPECT_EQ(lines(find()), Lines{"logind nothing 900 IdleAction is \"" + action + "\""});
  }
}

TEST_F(SleepDecidersTest, ReadGnomesSettingsForThePowerSourceOfNow) {
  FakeLogind logind(systemDaemon->address());
  const auto power = named(sessionDaemon->address(), "org.gnome.SettingsDaemon.Power");
  const std::string schema = "org.gnome.settings-daemon.plugins.power ";
  const std::string gsettings =
      tool({{schema + "sleep-inactive-ac-type", "echo \"'nothing'\""},
            {schema + "sleep-inactive-ac-timeout", "echo 1200"},
            {schema + "sleep-inactive-battery-type", "echo \"'suspend'\""},
            {schema + "sleep-inactive-battery-timeout", "echo 900"}});
  logind.setMachine({"ignore", 0, true, "yes"});
  EXPECT_EQ(lines(find(gsettings)),
            (Lines{"logind nothing 0 IdleAction is \"ignore\"",
                   "GNOME's power management nothing 1200 sleep-inactive-ac-type is \"nothing\""}));
  logind.setMachine({"ignore", 0, false, "yes"});
  const MachineSleep machine = find(gsettings);
  EXPECT_EQ(lines(machine).at(1),
            "GNOME's power management sleeps 900 sleep-inactive-battery-type is \"suspend\"");
  EXPECT_EQ(machine.deciders.at(1).heeds, Lines{"org.gnome.SessionManager"});
}

TEST_F(SleepDecidersTest, TakeATimeOfZeroForNever) {
  const auto power = named(sessionDaemon->address(), "org.mate.PowerManager");
  const std::string gsettings = tool({{"org.mate.power-manager sleep-computer-ac", "echo 0"}});
  EXPECT_EQ(lines(find(gsettings)),
            Lines{"MATE's power management nothing - sleep-computer-ac is 0"});
}

TEST_F(SleepDecidersTest, DoNotGuessWhatTheToolDoesNotTell) {
  const auto power = named(sessionDaemon->address(), "org.cinnamon.SettingsDaemon.Power");
  const Lines unknown{"Cinnamon's power management unknown - "};
  EXPECT_EQ(lines(find()), unknown);
  EXPECT_EQ(lines(find(tool({}))), unknown);
  const std::string schema = "org.cinnamon.settings-daemon.plugins.power ";
  EXPECT_EQ(lines(find(tool({{schema + "sleep-inactive-ac-timeout", "echo 1200"}}))), unknown);
}

TEST_F(SleepDecidersTest, DoNotWaitForAToolThatHangs) {
  const auto power = named(sessionDaemon->address(), "org.mate.PowerManager");
  const std::string gsettings =
      tool({{"org.mate.power-manager sleep-computer-ac", "exec sleep 1000"}});
  EXPECT_EQ(lines(find(gsettings)), Lines{"MATE's power management unknown - "});
}

TEST_F(SleepDecidersTest, ReadXfcesSettings) {
  const std::string address = sessionDaemon->address();
  auto settings = fakeXfconf(address, {{"/xfce4-power-manager/inactivity-on-ac", 30U}});
  EXPECT_EQ(lines(find()), Lines{"XFCE's power management sleeps 1800 inactivity-on-ac is 30"});
  settings = nullptr;
  settings = fakeXfconf(address, {{"/xfce4-power-manager/inactivity-on-ac", 14U}});
  EXPECT_EQ(lines(find()),
            Lines{"XFCE's power management nothing - inactivity-on-ac is \"never\""});
  settings = nullptr;
  settings = fakeXfconf(address, {});
  EXPECT_EQ(lines(find()),
            Lines{"XFCE's power management nothing - inactivity-on-ac is \"never\""});
  settings = nullptr;
  settings = fakeXfconf(address, {{"/xfce4-power-manager/inactivity-on-ac", 30U},
                                  {"/xfce4-power-manager/presentation-mode", true}});
  EXPECT_EQ(lines(find()), Lines{"XFCE's power management nothing - its presentation mode is on"});
}

TEST_F(SleepDecidersTest, DoNotGuessXfcesSettings) {
  const auto power = named(sessionDaemon->address(), "org.xfce.PowerManager");
  EXPECT_EQ(lines(find()), Lines{"XFCE's power management unknown - "});
}

TEST_F(SleepDecidersTest, NameThoseWhoseSettingsNobodyTells) {
  const auto power = named(sessionDaemon->address(), "org.kde.Solid.PowerManagement");
  const MachineSleep machine = find();
  EXPECT_EQ(lines(machine), Lines{"KDE's power management unknown - "});
  EXPECT_EQ(machine.deciders.front().heeds,
            (Lines{"org.kde.Solid.PowerManagement.PolicyAgent", "org.freedesktop.login1"}));
}

TEST_F(SleepDecidersTest, ReadLxqtsSettingsAndKnowThatItsWatcherAsksNobody) {
  const auto power = named(sessionDaemon->address(), "org.lxqt.lxqt-powermanagement");
  const ScopedEnvironment own("XDG_CONFIG_HOME", folder.path().string());
  const ScopedEnvironment shared("XDG_CONFIG_DIRS", "/nonexistent");
  const ScopedEnvironment x11("WAYLAND_DISPLAY", nullptr);
  EXPECT_EQ(lines(find()),
            Lines{"LXQt's idleness watcher nothing - enableIdlenessWatcher is false"});
  folder.write("lxqt/lxqt-powermanagement.conf",
               "[General]\nenableIdlenessWatcher=true\nidlenessACAction=4\n");
  const MachineSleep machine = find();
  EXPECT_EQ(lines(machine), Lines{"LXQt's idleness watcher sleeps 900 idlenessACAction is 4"});
  EXPECT_TRUE(machine.deciders.front().heeds.empty());
  EXPECT_FALSE(machine.deciders.front().isKeptOff);
  const FakeXServer server(std::chrono::seconds(0));
  xServer = server.address();
  EXPECT_TRUE(find().deciders.front().isKeptOff);
  const ScopedEnvironment wayland("WAYLAND_DISPLAY", "wayland-0");
  EXPECT_FALSE(find().deciders.front().isKeptOff);
}

TEST_F(SleepDecidersTest, ExpectADesktopBehindAServiceOfADesktop) {
  auto service = named(sessionDaemon->address(), "org.gnome.SessionManager");
  EXPECT_EQ(lines(find()), Lines{"the desktop's power management unknown - "});
  service = nullptr;
  service = named(sessionDaemon->address(), "org.freedesktop.PowerManagement");
  const MachineSleep machine = find();
  EXPECT_EQ(lines(machine), Lines{"the desktop's power management unknown - "});
  EXPECT_EQ(machine.deciders.front().heeds, Lines{"org.freedesktop.PowerManagement"});
}

/// org.freedesktop.PowerManagement with what it answers.
std::unique_ptr<BusService> powerManagement(const std::string& address, const Lines* names,
                                            std::optional<bool> isInhibited) {
  return std::make_unique<BusService>(
      address, std::vector<std::string>{"org.freedesktop.PowerManagement"},
      [names, isInhibited](sd_bus_message* call) {
        const std::string_view member = sd_bus_message_get_member(call);
        if (member == "GetInhibitors" && names != nullptr) {
          sd_bus_message* reply = nullptr;
          sd_bus_message_new_method_return(call, &reply);
          sd_bus_message_open_container(reply, 'a', "s");
          for (const std::string& name : *names)
            sd_bus_message_append(reply, "s", name.c_str());
          sd_bus_message_close_container(reply);
          sd_bus_message_send(reply);
          sd_bus_message_unref(reply);
        } else if (member == "HasInhibit" && isInhibited) {
          sd_bus_reply_method_return(call, "b", *isInhibited ? 1 : 0);
        } else {
          sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_METHOD, "unknown");
        }
      });
}

class PowerManagementListTest : public BusTest {
 protected:
  /// The holders, or what there is instead.
  Lines holders() {
    const auto listed = listPowerManagementInhibitors(*sessionBus);
    if (!listed) return {"absent"};
    Lines result;
    for (const ListedInhibitor& inhibitor : *listed)
      result.push_back(inhibitor.holder + ": " + inhibitor.types.at(0));
    return result;
  }
};

TEST_F(PowerManagementListTest, AreAbsentWithoutTheService) {
  EXPECT_EQ(holders(), Lines{"absent"});
}

TEST_F(PowerManagementListTest, AreNamedWhereTheServiceNamesThem) {
  const Lines names{"vlc", "a\x1B[2J"};
  const auto service = powerManagement(sessionDaemon->address(), &names, true);
  EXPECT_EQ(holders(),
            (Lines{"vlc: PreventUserIdleSystemSleep", "a\uFFFD[2J: PreventUserIdleSystemSleep"}));
}

TEST_F(PowerManagementListTest, AreSomebodysWhereOnlyThatIsTold) {
  auto service = powerManagement(sessionDaemon->address(), nullptr, true);
  EXPECT_EQ(holders(), Lines{": PreventUserIdleSystemSleep"});
  service = nullptr;
  service = powerManagement(sessionDaemon->address(), nullptr, false);
  EXPECT_EQ(holders(), Lines{});
  service = nullptr;
  service = powerManagement(sessionDaemon->address(), nullptr, std::nullopt);
  EXPECT_EQ(holders(), Lines{"absent"});
}

}  // namespace
}  // namespace platform
