#include "Staylit/DoctorReport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

namespace staylit {
namespace {

using Decides = HoldsReport::Decider::Action;
using Lines = std::vector<std::string>;
using Listing = DoctorFacts::Trial::Listing;
using Signs = DoctorReport::Signs;

constexpr const char* kLogind = "org.freedesktop.login1";

/// A machine on which all is well.
DoctorFacts healthy() {
  DoctorFacts facts;
  facts.sleep.services = {kLogind};
  facts.sleep.canSleep = true;
  facts.sleep.deciders = {
      {"logind", Decides::sleeps, tidewell::Seconds(900), "IdleAction is \"suspend\"", {kLogind}}};
  facts.trials = {{kLogind, kLogind, Listing::listed}};
  facts.hasLogind = true;
  facts.hasPolkit = true;
  facts.tray = DoctorFacts::Tray::ready;
  facts.windows = DoctorFacts::Windows::ready;
  facts.seesOthers = true;
  facts.hasProcessorClocks = true;
  facts.isRunning = true;
  facts.hasJournal = true;
  facts.hasSettingsFile = true;
  facts.particulars = {"Staylit 1.0"};
  return facts;
}

Lines linesOf(const DoctorFacts& facts, Signs signs = Signs::drawn) {
  return DoctorReport::of(facts).lines(signs);
}
bool has(const Lines& lines, const std::string& line) {
  return std::ranges::find(lines, line) != lines.end();
}
/// The one finding that is not fine, and its remedy.
Lines toDo(const DoctorFacts& facts) {
  Lines result;
  for (const DoctorReport::Check& check : DoctorReport::of(facts).checks) {
    if (!check.remedy.empty()) result.insert(result.end(), {check.finding, check.remedy});
  }
  return result;
}
DoctorReport::Exit exitOf(const DoctorFacts& facts) {
  return DoctorReport::of(facts).exitStatus();
}

TEST(DoctorReport, IsMadeWhenItIsAskedFor) {
  EXPECT_TRUE(DoctorReport::isAskedFor({"staylit", "--pause", "--doctor"}));
  EXPECT_FALSE(DoctorReport::isAskedFor({"staylit", "--Doctor"}));
  EXPECT_FALSE(DoctorReport::isAskedFor({"staylit", "--doctor", "--diagnose"}));
}

TEST(DoctorReport, FindsNothingToDoOnAHealthyMachine) {
  EXPECT_EQ(
      linesOf(healthy()),
      (Lines{"✓ This machine would go to sleep after 15 min without use: logind does that "
             "(IdleAction is \"suspend\"), and nothing holds it awake.",
             "✓ A hold that was tried is granted by org.freedesktop.login1, and listed where "
             "there is a list.",
             "✓ Whoever may put the machine to sleep here heeds Staylit's hold.",
             "✓ polkit is here.", "✓ A panel is here that shows the item.",
             "✓ The windows are installed.",
             "✓ As this user, Staylit sees this user's work whole, and of others' the "
             "processor time.",
             "✓ The processes' CPU clocks can be read.", "✓ The settings file has nothing wrong.",
             "✓ Staylit runs.", "✓ The log goes to the journal.", "",
             "For a report, paste this:", "", "    Staylit 1.0", "    to do: nothing"}));
  EXPECT_EQ(exitOf(healthy()), DoctorReport::fine);
}

TEST(DoctorReport, SaysWhatToDoBelowWhatIsWrong) {
  DoctorFacts facts = healthy();
  facts.windows = DoctorFacts::Windows::absent;
  facts.isRunning = false;
  const Lines lines = linesOf(facts);
  const auto found = std::ranges::find(lines, "✗ The windows are not installed.");
  ASSERT_NE(found, lines.end());
  EXPECT_EQ(*(found + 1), "  To do: Install the package staylit-desktop.");
  EXPECT_EQ(lines.back(), "    to do: windows, running");
  EXPECT_EQ(exitOf(facts), DoctorReport::somethingToDo);
}

TEST(DoctorReport, DoesNotStartAnotherWhereOneIsOutOfReach) {
  DoctorFacts facts = healthy();
  facts.isRunning = false;
  facts.outOfReach = "one runs as process 160, but not on this session bus";
  EXPECT_TRUE(has(linesOf(facts),
                  "✗ Staylit cannot be asked: one runs as process 160, but not on this session "
                  "bus."));
}

TEST(DoctorReport, NamesTheFileOfTheMachinesSettings) {
  DoctorFacts facts = healthy();
  facts.settingsProblems = {{3, "it is wrong", "/etc/staylit/settings.toml"}, {4, "it is too"}};
  const Lines lines = linesOf(facts);
  EXPECT_TRUE(has(lines, "✗ /etc/staylit/settings.toml, line 3: it is wrong"));
  EXPECT_TRUE(has(lines, "✗ Settings, line 4: it is too"));
}

TEST(DoctorReport, DoesWithoutDrawnSigns) {
  DoctorFacts facts = healthy();
  facts.hasJournal = false;
  const Lines lines = linesOf(facts, Signs::plain);
  EXPECT_TRUE(has(lines, "ok Staylit runs."));
  EXPECT_TRUE(has(lines, "!! No journal is here: the log goes to standard error."));
  for (const std::string& line : lines) {
    EXPECT_TRUE(std::ranges::all_of(line, [](char character) { return character > 0; })) << line;
  }
}

TEST(DoctorReport, SaysFirstOfAllWhereNothingCanBeHeld) {
  DoctorFacts facts;
  EXPECT_EQ(linesOf(facts).front(),
            "Nothing can be held here: neither logind nor a desktop's power service is here, as in "
            "a container; holds are recorded only.");
  EXPECT_EQ(exitOf(facts), DoctorReport::trouble);
  EXPECT_FALSE(
      has(linesOf(facts), "✓ Whoever may put the machine to sleep here heeds Staylit's hold."));
}

TEST(DoctorReport, SaysWhyAServiceThatIsThereHoldsNothing) {
  DoctorFacts facts = healthy();
  facts.trials = {{kLogind, kLogind, Listing::refused}};
  facts.hasPolkit = false;
  facts.trialError = -EACCES;
  const auto why = [&facts] { return DoctorReport::of(facts).nothingCanBeHeld; };
  EXPECT_EQ(why(), "without polkit the login service gives holds to root alone");
  EXPECT_TRUE(has(linesOf(facts), "  To do: Install polkitd."));
  facts.hasPolkit = true;
  EXPECT_EQ(why(), "the service that would have to grant it refuses");
  facts.trialError = -ETIMEDOUT;
  EXPECT_EQ(why(), "the service that would have to grant it hangs");
  facts.trialError = -EIO;
  EXPECT_EQ(why(), "no service grants a hold (error -5)");
  EXPECT_EQ(exitOf(facts), DoctorReport::trouble);
}

TEST(DoctorReport, HasServicesRestartedThatHang) {
  DoctorFacts facts = healthy();
  facts.trials = {{kLogind, kLogind, Listing::refused}};
  facts.trialError = -ETIMEDOUT;
  facts.hasPolkit = false;
  facts.sleep.deciders.clear();
  facts.sleep.canSleep.reset();
  const std::string restart = "As root: systemctl restart systemd-logind.";
  const auto remedy = [&facts](std::size_t check) {
    return DoctorReport::of(facts).checks.at(check).remedy;
  };
  EXPECT_EQ(remedy(1), restart);
  facts.sleep.silent = {kLogind};
  EXPECT_EQ(remedy(0), restart);
  EXPECT_EQ(remedy(1), restart);
  facts.sleep.silent.emplace_back("org.gnome.SessionManager");
  EXPECT_EQ(remedy(1), restart + " Restart org.gnome.SessionManager: log out and in again.");
}

TEST(DoctorReport, HasAServiceRestartedThatHangsBesideOneThatGrants) {
  DoctorFacts facts = healthy();
  facts.trials.push_back(
      {"org.gnome.SessionManager", "org.gnome.SessionManager", Listing::refused});
  EXPECT_EQ(toDo(facts).at(1), "See what polkit and the service's own log say.");
  facts.sleep.silent = {"org.gnome.SessionManager"};
  EXPECT_EQ(toDo(facts).at(3), "Restart org.gnome.SessionManager: log out and in again.");
}

TEST(DoctorReport, HasNothingToDoOnAMachineThatNeverSleeps) {
  DoctorFacts facts = healthy();
  facts.sleep.deciders.front().action = Decides::nothing;
  EXPECT_EQ(linesOf(facts).front(),
            "✓ This machine does not go to sleep by itself, held or not: logind does not put it to "
            "sleep (IdleAction is \"suspend\"). If it should: choose so in the desktop's settings, "
            "or without a desktop IdleAction=suspend in /etc/systemd/logind.conf.");
  EXPECT_EQ(exitOf(facts), DoctorReport::fine);
  facts.sleep.canSleep = false;
  EXPECT_EQ(linesOf(facts).front(),
            "✓ This machine does not go to sleep: logind says that it cannot be suspended. Nothing "
            "needs to keep it awake.");
  EXPECT_EQ(exitOf(facts), DoctorReport::fine);
}

TEST(DoctorReport, TellsWhichServiceRefusesOrDoesNotListTheHold) {
  DoctorFacts facts = healthy();
  facts.trials = {{kLogind, kLogind, Listing::listed},
                  {"org.gnome.SessionManager", "org.gnome.SessionManager", Listing::notListed}};
  EXPECT_EQ(toDo(facts).at(0),
            "A hold that was tried is granted, but not listed by org.gnome.SessionManager.");
  EXPECT_EQ(exitOf(facts), DoctorReport::somethingToDo);
  facts.trials.back().listing = Listing::refused;
  EXPECT_EQ(toDo(facts).at(0), "A hold that was tried is refused by org.gnome.SessionManager.");
  facts.trials.back().listing = Listing::hasNoList;
  EXPECT_EQ(toDo(facts), Lines{});
}

TEST(DoctorReport, TellsWhoDoesNotHeedTheHold) {
  DoctorFacts facts = healthy();
  facts.sleep.deciders.push_back(
      {"LXQt's idleness watcher", Decides::unknown, std::nullopt, "", {}});
  EXPECT_EQ(toDo(facts),
            (Lines{"LXQt's idleness watcher may put the machine to sleep, and heeds no hold of "
                   "Staylit.",
                   "Let another do it: docs/Desktops.md says how for each desktop."}));
  facts.sleep.deciders.back().isKeptOff = true;
  EXPECT_EQ(toDo(facts), Lines{});
  facts.sleep.deciders.back().isKeptOff = false;
  facts.sleep.deciders.back().action = Decides::nothing;
  EXPECT_EQ(toDo(facts), Lines{});
}

TEST(DoctorReport, KnowsThatAnotherServiceMayListWhatOneGrants) {
  DoctorFacts facts = healthy();
  const char* agent = "org.kde.Solid.PowerManagement.PolicyAgent";
  facts.trials = {{"org.freedesktop.PowerManagement", agent, Listing::listed}};
  facts.sleep.deciders = {{"KDE's power management", Decides::unknown, std::nullopt, "", {agent}}};
  EXPECT_EQ(toDo(facts), Lines{});
}

TEST(DoctorReport, WantsPolkitOnlyWhereItIsNeeded) {
  DoctorFacts facts = healthy();
  facts.hasPolkit = false;
  EXPECT_EQ(toDo(facts), (Lines{"No polkit is here: the login service gives holds to root alone.",
                                "Install polkitd."}));
  facts.isRoot = true;
  EXPECT_EQ(toDo(facts), Lines{});
  facts.isRoot = false;
  facts.hasLogind = false;
  EXPECT_EQ(toDo(facts), Lines{});
}

TEST(DoctorReport, WantsAPanelAndWindowsOnlyWhereThereIsADisplay) {
  DoctorFacts facts = healthy();
  facts.tray = DoctorFacts::Tray::noWatcher;
  EXPECT_EQ(toDo(facts).at(0), "No panel is here that shows status-notifier items.");
  facts.tray = DoctorFacts::Tray::noPanel;
  EXPECT_EQ(toDo(facts).at(0), "The panel's watcher is here, but no panel that shows items.");
  facts.tray = DoctorFacts::Tray::noDisplay;
  facts.windows = DoctorFacts::Windows::absent;
  EXPECT_EQ(toDo(facts), Lines{});
}

TEST(DoctorReport, TellsWindowsThatDoNotFit) {
  DoctorFacts facts = healthy();
  facts.windows = DoctorFacts::Windows::ofAnotherBuild;
  EXPECT_EQ(toDo(facts).at(0), "The windows are of another version than the program.");
  facts.windows = DoctorFacts::Windows::unfit;
  EXPECT_EQ(toDo(facts).at(0),
            "The windows do not fit this system: Qt is missing, or a part of it.");
}

TEST(DoctorReport, TellsWhatStaylitCannotSee) {
  DoctorFacts facts = healthy();
  facts.seesOthers = false;
  facts.hasProcessorClocks = false;
  const Lines found = toDo(facts);
  ASSERT_EQ(found.size(), 4U);
  EXPECT_EQ(found[0], "Processes of other users are hidden here (/proc is mounted with hidepid).");
  EXPECT_EQ(found[2], "The processes' CPU clocks cannot be read; coarser files serve instead.");
  facts = healthy();
  facts.isRoot = true;
  EXPECT_TRUE(has(linesOf(facts), "✓ As root, Staylit sees the work of all users."));
}

TEST(DoctorReport, NamesEachLineOfTheSettingsThatIsWrong) {
  DoctorFacts facts = healthy();
  facts.settingsProblems = {{3, "it cannot be read, and does not count"}, {7, "b"}};
  EXPECT_EQ(toDo(facts),
            (Lines{"Settings, line 3: it cannot be read, and does not count",
                   "Mend that line; README.md and staylit(1) list the keys.", "Settings, line 7: b",
                   "Mend that line; README.md and staylit(1) list the keys."}));
  EXPECT_FALSE(has(linesOf(facts), "✓ The settings file has nothing wrong."));
}

TEST(DoctorReport, SaysInTheReportNoMoreThanThatSettingsAreWrong) {
  DoctorFacts facts = healthy();
  facts.settingsProblems = {{3, "nobody knows the key \"secret\""}, {4, "b"}};
  facts.settingsError = "";
  EXPECT_EQ(linesOf(facts).back(), "    to do: settings");
}

TEST(DoctorReport, SaysThatThereIsNoSettingsFile) {
  DoctorFacts facts = healthy();
  facts.hasSettingsFile = false;
  EXPECT_TRUE(
      has(linesOf(facts), "✓ There is no settings file, so every setting has its default."));
  EXPECT_FALSE(has(linesOf(facts), "✓ The settings file has nothing wrong."));
}

TEST(DoctorReport, TellsOfASettingsFileThatCannotBeRead) {
  DoctorFacts facts = healthy();
  facts.settingsError = "it is a folder";
  EXPECT_EQ(toDo(facts), (Lines{"The settings file cannot be read: it is a folder",
                                "Put a readable text file in its place, or none."}));
}

}  // namespace
}  // namespace staylit
