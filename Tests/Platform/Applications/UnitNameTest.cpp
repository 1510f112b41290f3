#include "Platform/Linux/Applications/UnitName.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

using Ids = std::vector<std::string>;

constexpr char kAppSlice[] = "0::/user.slice/user-1000.slice/user@1000.service/app.slice/";

/// The ids of a process whose leaf group is `unit`.
Ids idsOf(const std::string& unit) {
  return UnitName::fromControlGroup(kAppSlice + unit + "\n").applicationIds();
}

std::string unitOf(std::string_view file) {
  return std::string(UnitName::fromControlGroup(file).name());
}

TEST(UnitName, IsTheInnermostUnitOfTheUnifiedHierarchy) {
  EXPECT_EQ(unitOf("0::/user.slice/user-1000.slice/session-2.scope\n"), "session-2.scope");
  EXPECT_EQ(unitOf("12:cpu:/\n1:name=systemd:/a.service\n0::/system.slice/cron.service\n"),
            "cron.service");
  EXPECT_EQ(unitOf("0::/system.slice/cron.service"), "cron.service");
}

TEST(UnitName, IsTheUnitAboveAGroup) {
  EXPECT_EQ(unitOf("0::/app.slice/app-podman-12.scope/container/inner\n"), "app-podman-12.scope");
  EXPECT_EQ(unitOf("0::/user.slice/user-1000.slice/user@1000.service/init.scope\n"), "init.scope");
}

TEST(UnitName, IsEmptyInASliceOrAtTheRoot) {
  EXPECT_EQ(unitOf("0::/\n"), "");
  EXPECT_EQ(unitOf("0::/user.slice\n"), "");
  EXPECT_EQ(unitOf("0::/user@1000.service/app.slice/loose\n"), "");
  EXPECT_EQ(UnitName::fromControlGroup("0::/\n"), UnitName());
}

TEST(UnitName, IsEmptyWithoutTheUnifiedHierarchy) {
  EXPECT_EQ(unitOf(""), "");
  EXPECT_EQ(unitOf("1:name=systemd:/system.slice/cron.service\n"), "");
  EXPECT_EQ(unitOf("10::/a.service\n"), "");
  EXPECT_EQ(unitOf("0::"), "");
}

TEST(UnitName, IsReadFromAGroupThatWasRemoved) {
  EXPECT_EQ(unitOf("0::/app.slice/app-gnome-firefox-12.scope (deleted)\n"),
            "app-gnome-firefox-12.scope");
}

TEST(UnitName, KnowsTheGroupOfTheUnit) {
  EXPECT_EQ(UnitName::fromControlGroup("0::/a.slice/b.scope/inner\n").path(), "/a.slice/b.scope");
}

TEST(UnitName, NamesTheApplicationOfAScope) {
  EXPECT_EQ(idsOf("app-org.kde.konsole-20231.scope").front(), "org.kde.konsole");
  EXPECT_EQ(idsOf("app-org.kde.dolphin-8d1f2a0b5c6e4f7a9b0c1d2e3f4a5b6c.scope").front(),
            "org.kde.dolphin");
}

TEST(UnitName, OffersTheIdWithAndWithoutALauncher) {
  EXPECT_EQ(idsOf("app-gnome-firefox-4711.scope"),
            (Ids{"gnome-firefox", "firefox", "gnome-firefox-4711"}));
  EXPECT_EQ(idsOf("app-gnome-google\\x2dchrome-4711.scope"),
            (Ids{"gnome-google-chrome", "google-chrome", "gnome-google-chrome-4711"}));
}

TEST(UnitName, KeepsAnIdWithDashesWhole) {
  EXPECT_EQ(idsOf("app-google\\x2dchrome-4711.scope").front(), "google-chrome");
  const Ids plain = idsOf("app-gnome-system-monitor-4711.scope");
  EXPECT_EQ(plain.front(), "gnome-system-monitor");
  EXPECT_EQ(plain[1], "system-monitor");
}

TEST(UnitName, TakesAScopeWithoutARandomPartAsItStands) {
  EXPECT_EQ(idsOf("app-my\\x2deditor.scope"), Ids{"my-editor"});
  EXPECT_EQ(idsOf("app-my-editor.scope"), (Ids{"my", "my-editor"}));
}

TEST(UnitName, NamesTheApplicationOfAService) {
  EXPECT_EQ(idsOf("app-org.kde.konsole@1b2c.service"), Ids{"org.kde.konsole"});
  EXPECT_EQ(idsOf("app-org.gnome.Console.service"), Ids{"org.gnome.Console"});
  EXPECT_EQ(
      idsOf("app-gnome-org.gnome.Evolution\\x2dalarm\\x2dnotify@autostart.service"),
      (Ids{"gnome-org.gnome.Evolution-alarm-notify", "org.gnome.Evolution-alarm-notify", "gnome"}));
}

TEST(UnitName, NamesTheApplicationOfAnOldAutostartService) {
  const Ids ids = idsOf("app-org.kde.kgpg-autostart.service");
  EXPECT_EQ(ids, (Ids{"org.kde.kgpg-autostart", "autostart", "org.kde.kgpg"}));
}

TEST(UnitName, NamesAFlatpakApplication) {
  EXPECT_EQ(idsOf("app-flatpak-org.mozilla.firefox-1126565164.scope").front(),
            "org.mozilla.firefox");
  EXPECT_EQ(idsOf("app-flatpak-com.example.Two\\x2dWords-12.scope").front(),
            "com.example.Two-Words");
  EXPECT_EQ(idsOf("app-flatpak-com.example.Two-Words-12.scope").front(), "com.example.Two-Words");
}

TEST(UnitName, NamesASnapApplication) {
  EXPECT_EQ(idsOf("snap.firefox.firefox.3dcfaa86-bf58-4d3e-a7c6-4e34dfdb050f.scope"),
            Ids{"firefox_firefox"});
  EXPECT_EQ(idsOf("snap.firefox.firefox-3dcfaa86-bf58-4d3e-a7c6-4e34dfdb050f.scope"),
            Ids{"firefox_firefox"});
  EXPECT_EQ(idsOf("snap.code-insiders.url-handler-3dcfaa86-bf58-4d3e-a7c6-4e34dfdb050f.scope"),
            Ids{"code-insiders_url-handler"});
}

TEST(UnitName, NamesNoApplicationForOddSnapUnits) {
  EXPECT_EQ(idsOf("snap.lxd.daemon.service"), Ids{});
  EXPECT_EQ(idsOf("snap.lxd.scope"), Ids{});
  EXPECT_EQ(idsOf("snap.a.hook.b-3dcfaa86-bf58-4d3e-a7c6-4e34dfdb050f.scope"), Ids{});
  EXPECT_EQ(idsOf("snap..-3dcfaa86-bf58-4d3e-a7c6-4e34dfdb050f.scope"), Ids{});
  EXPECT_EQ(idsOf("snap.3dcfaa86-bf58-4d3e-a7c6-4e34dfdb050f.scope"), Ids{});
}

TEST(UnitName, NamesTheApplicationThatTheBusStarted) {
  EXPECT_EQ(idsOf("dbus-:1.2-org.gnome.Loupe@0.service"), Ids{"org.gnome.Loupe"});
  EXPECT_EQ(idsOf("dbus-org.freedesktop.timedate1.service"), Ids{});
  EXPECT_EQ(idsOf("dbus-:1.2@0.service"), Ids{});
}

TEST(UnitName, NamesNoApplicationForSessionsAndTerminalTabs) {
  for (const char* unit :
       {"session-2.scope", "init.scope", "cron.service", "user@1000.service", "dbus.service",
        "app-org.gnome.Terminal.slice/vte-spawn-0c9b9f4b-1d0f-4f2c-9b59-0f9c2d3e4f5a.scope",
        "app-org.gnome.Terminal.slice/gnome-terminal-server.service", "app-.scope", "app-.service",
        "app-@x.service", "application.scope"}) {
    EXPECT_EQ(idsOf(unit), Ids{}) << unit;
  }
}

TEST(UnitName, OffersOnlySafeFileNames) {
  EXPECT_EQ(idsOf("app-..\\x2f..\\x2fetc\\x2fpasswd-1.scope"), Ids{});
  EXPECT_EQ(idsOf("app-\\x2ehidden-1.scope"), Ids{});
  EXPECT_EQ(idsOf("app-a\\x00b-1.scope"), Ids{});
  EXPECT_EQ(idsOf("app-a\\xffb-1.scope"), Ids{});
  EXPECT_EQ(idsOf("app-a\\x0ab-1.scope"), Ids{});
}

TEST(UnitName, LeavesTextThatIsNoEscapeAlone) {
  EXPECT_EQ(idsOf("app-a\\x2-1.scope").front(), "a\\x2");
  EXPECT_EQ(idsOf("app-a\\y2d-1.scope").front(), "a\\y2d");
}

TEST(UnitName, IgnoresNamesThatNoUnitCanHave) {
  EXPECT_EQ(idsOf("app-" + std::string(10000, '-') + "-1.scope"), Ids{});
}

}  // namespace
}  // namespace platform
