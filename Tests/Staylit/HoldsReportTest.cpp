#include "Staylit/HoldsReport.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "Staylit/TimeTexts.h"

namespace staylit {
namespace {

using namespace std::chrono_literals;
using Activity = HoldsReport::Activity;
using Decides = HoldsReport::Decider::Action;
using Decider = HoldsReport::Decider;
using Effect = HoldsReport::Effect;
using Hold = HoldsReport::Hold;
using Verdict = HoldsReport::Verdict;
using Lines = std::vector<std::string>;

/// 22 November 2026, 09:31:04 in universal time.
constexpr tidewell::WallTime kNow{1'795'339'864s};

Decider logindThat(Decides action) {
  return {"logind",
          action,
          1800s,
          action == Decides::nothing ? "IdleAction is \"ignore\"" : "IdleAction is \"suspend\"",
          {"org.freedesktop.login1"}};
}
Decider gnomeThat(Decides action) {
  return {"GNOME's power management", action, std::nullopt, "", {"org.gnome.SessionManager"}};
}
Hold at(const char* service, const char* owner, Effect effect = Effect::idleSleep) {
  Hold hold;
  hold.service = service;
  hold.owner = owner;
  hold.effect = effect;
  return hold;
}
Hold atLogind(const char* owner, Effect effect = Effect::idleSleep) {
  return at("org.freedesktop.login1", owner, effect);
}

TEST(HoldsReport, NamesTheServiceThatHangs) {
  HoldsReport report;
  report.services = {"org.freedesktop.login1"};
  report.silent = report.services;
  EXPECT_EQ(report.summary(),
            "Whether this machine would go to sleep now cannot be told: org.freedesktop.login1 "
            "does not answer; restart it.");
  report.silent.emplace_back("org.gnome.SessionManager");
  EXPECT_EQ(report.summary(),
            "Whether this machine would go to sleep now cannot be told: org.freedesktop.login1 "
            "and org.gnome.SessionManager do not answer; restart them.");
}

TEST(HoldsReport, SaysThatItCannotTellWhereNobodyAnswers) {
  const HoldsReport report;
  EXPECT_EQ(report.verdict(), Verdict::unknown);
  EXPECT_EQ(report.summary(),
            "Whether this machine would go to sleep now cannot be told: neither logind nor a "
            "desktop's power management answers.");
}

TEST(HoldsReport, SaysThatNobodyPutsTheMachineToSleep) {
  HoldsReport report;
  report.deciders = {logindThat(Decides::nothing), gnomeThat(Decides::nothing)};
  report.holds = {atLogind("mpv")};
  EXPECT_EQ(report.verdict(), Verdict::never);
  EXPECT_EQ(report.summary(),
            "This machine does not go to sleep by itself, held or not: logind does not put it to "
            "sleep (IdleAction is \"ignore\") and GNOME's power management does not put it to "
            "sleep.");
}

TEST(HoldsReport, SaysThatTheMachineCannotSleepWhateverIsSet) {
  HoldsReport report;
  report.canSleep = false;
  report.deciders = {logindThat(Decides::sleeps)};
  EXPECT_EQ(report.verdict(), Verdict::never);
  EXPECT_EQ(report.summary(),
            "This machine does not go to sleep: logind says that it cannot be suspended.");
}

TEST(HoldsReport, SaysWhenAMachineThatNothingHoldsWouldSleep) {
  HoldsReport report;
  report.canSleep = true;
  report.deciders = {logindThat(Decides::sleeps)};
  EXPECT_EQ(report.verdict(), Verdict::sleeps);
  EXPECT_EQ(report.summary(),
            "This machine would go to sleep after 30 min without use: logind does that "
            "(IdleAction is \"suspend\"), and nothing holds it awake.");
}

TEST(HoldsReport, SaysWhoHoldsAndWhoWouldElsePutItToSleep) {
  HoldsReport report;
  report.deciders = {logindThat(Decides::sleeps)};
  report.holds = {atLogind("Staylit")};
  EXPECT_EQ(report.verdict(), Verdict::held);
  EXPECT_EQ(report.summary(),
            "This machine would not go to sleep now: Staylit holds it awake; else logind would "
            "after 30 min (IdleAction is \"suspend\").");
}

TEST(HoldsReport, NamesThreeWhoHoldAndCountsTheOthersOnceEach) {
  HoldsReport report;
  report.deciders = {logindThat(Decides::sleeps)};
  report.holds = {atLogind("a"), atLogind("b"), atLogind("a"),
                  atLogind(""),  atLogind("c"), atLogind("d")};
  EXPECT_EQ(report.summary(),
            "This machine would not go to sleep now: a, b, somebody and 2 more hold it awake; else "
            "logind would after 30 min (IdleAction is \"suspend\").");
}

TEST(HoldsReport, SeesThatAHoldIsNotOneThatWhoPutsTheMachineToSleepHeeds) {
  HoldsReport report;
  report.deciders = {gnomeThat(Decides::sleeps)};
  report.holds = {atLogind("mpv")};
  EXPECT_EQ(report.verdict(), Verdict::sleeps);
  EXPECT_EQ(report.summary(),
            "This machine would go to sleep: GNOME's power management does that, and heeds none of "
            "the holds.");
}

TEST(HoldsReport, KnowsWhomStaylitKeepsOffWithoutAService) {
  HoldsReport report;
  report.deciders = {{"LXQt's idleness watcher", Decides::sleeps, 900s, "", {}, true}};
  report.holds = {atLogind("mpv")};
  EXPECT_EQ(report.verdict(), Verdict::sleeps);
  report.holds = {atLogind("Staylit", Effect::lidSleep)};
  EXPECT_EQ(report.verdict(), Verdict::sleeps);
  report.holds = {atLogind("Staylit")};
  EXPECT_EQ(report.summary(),
            "This machine would not go to sleep now: Staylit holds it awake; else LXQt's idleness "
            "watcher would after 15 min.");
}

TEST(HoldsReport, TakesALockOnEverySleepForOneThatAllHeed) {
  HoldsReport report;
  report.deciders = {gnomeThat(Decides::sleeps), logindThat(Decides::sleeps)};
  report.holds = {atLogind("dpkg", Effect::everySleep)};
  EXPECT_EQ(report.verdict(), Verdict::held);
}

TEST(HoldsReport, TakesALockOnTheLidForNoneThatKeepsAnUnusedMachineAwake) {
  HoldsReport report;
  report.deciders = {logindThat(Decides::sleeps)};
  report.holds = {atLogind("Staylit", Effect::lidSleep)};
  EXPECT_EQ(report.verdict(), Verdict::sleeps);
}

TEST(HoldsReport, IsHeldOnlyWhenAllAreHeldWhoMightPutItToSleep) {
  HoldsReport report;
  report.deciders = {logindThat(Decides::sleeps), gnomeThat(Decides::unknown)};
  report.holds = {at("org.gnome.SessionManager", "Totem", Effect::idleness)};
  EXPECT_EQ(report.verdict(), Verdict::sleeps);
  report.holds.push_back(atLogind("mpv"));
  EXPECT_EQ(report.verdict(), Verdict::held);
  EXPECT_EQ(report.summary(),
            "This machine would not go to sleep now: Totem and mpv hold it awake; else logind "
            "would after 30 min (IdleAction is \"suspend\") and GNOME's power management, "
            "whose settings cannot be read here, might.");
}

TEST(HoldsReport, SaysWhoseSettingsCannotBeReadWhereNothingHolds) {
  HoldsReport report;
  report.deciders = {logindThat(Decides::nothing), gnomeThat(Decides::unknown)};
  EXPECT_EQ(report.verdict(), Verdict::unknown);
  EXPECT_EQ(report.summary(),
            "Whether this machine would go to sleep now cannot be told: the settings of GNOME's "
            "power management cannot be read here, and nothing holds it awake.");
  report.holds = {atLogind("mpv")};
  EXPECT_EQ(report.summary(),
            "Whether this machine would go to sleep now cannot be told: the settings of GNOME's "
            "power management cannot be read here, and no hold binds it.");
}

Hold quietHold() {
  Hold hold = atLogind("mpv");
  hold.reason = "Playing";
  hold.user = "alice";
  hold.processIdentifier = 4711;
  hold.program = "mpv";
  hold.since = kNow - 3h - 20min;
  hold.activity = {Activity::State::quiet, 0, 3h + 12min + 5s};
  return hold;
}

TEST(HoldsReport, TellsOfEachHoldWhoseItIsAndMarksAQuietOne) {
  HoldsReport report;
  report.deciders = {logindThat(Decides::sleeps)};
  report.holds = {quietHold()};
  EXPECT_EQ(report.lines(kNow),
            (Lines{report.summary(), "", "Holds (1):", "! mpv — Playing",
                   "    Keeps off:  sleep of the unused machine",
                   "    Held by:    org.freedesktop.login1",
                   "    Owner:      process 4711 (mpv) of alice",
                   "    Since:      " + timeOfDay(kNow - 3h - 20min) + " (3 h 20 min)",
                   "    It does:    quiet for 3 h 12 min", "",
                   "! The owner is gone or quiet: the hold may be a forgotten one."}));
}

TEST(HoldsReport, SaysOfEachHoldWhatIsNotKnown) {
  HoldsReport report;
  report.holds = {at("org.gnome.SessionManager", "")};
  EXPECT_EQ(report.lines(kNow),
            (Lines{report.summary(), "", "Holds (1):", "  somebody",
                   "    Keeps off:  sleep of the unused machine",
                   "    Held by:    org.gnome.SessionManager",
                   "    Owner:      a process that the service does not tell",
                   "    Since:      seen now; nobody tells since when",
                   "    It does:    unknown, for the service does not tell its process"}));
}

/// The line of a hold with that activity, and whether the hold is marked.
std::string doing(const Activity& activity) {
  HoldsReport report;
  Hold hold = atLogind("x");
  hold.processIdentifier = 7;
  hold.activity = activity;
  report.holds = {hold};
  const Lines lines = report.lines(kNow);
  return lines.at(3).substr(0, 1) + lines.at(8).substr(16);
}

TEST(HoldsReport, SaysWhatAnOwnerDoes) {
  using State = Activity::State;
  EXPECT_EQ(doing({State::gone, 0, std::nullopt}), "!its process is gone");
  EXPECT_EQ(doing({State::quiet, 0, std::nullopt}), "!quiet as long as it was watched");
  EXPECT_EQ(doing({State::quiet, 0, 10s}), "!quiet for 10 s");
  EXPECT_EQ(doing({State::quiet, 0, 9s}), " quiet for 9 s") << "work has its pauses";
  EXPECT_EQ(doing({State::active, 0.4, std::nullopt}), " less than 1% CPU");
  EXPECT_EQ(doing({State::active, 1.0, std::nullopt}), " 1% CPU");
  EXPECT_EQ(doing({State::active, 187.6, std::nullopt}), " 188% CPU");
  EXPECT_EQ(doing({State::passesOn, 0, std::nullopt}),
            " passes on what others ask, and does not tell who");
  EXPECT_EQ(doing({}), " unknown, for its process cannot be seen from here");
}

TEST(HoldsReport, SaysWhatTheStaylitThatRunsSeesAndDoubtsNoHoldOfWhatWorks) {
  HoldsReport report;
  report.holds = {quietHold()};
  report.holds.front().staylitSees = "mpv — 500 KB/s net, for 3 min 5 s";
  const Lines lines = report.lines(kNow);
  EXPECT_EQ(lines.at(3), "  mpv — Playing");
  EXPECT_EQ(lines.back(), "    To Staylit: mpv — 500 KB/s net, for 3 min 5 s");
  EXPECT_NE(report.json(kNow).find(R"("staylitSees":"mpv — 500 KB/s net, for 3 min 5 s")"),
            std::string::npos);
}

TEST(HoldsReport, SaysWhatAHoldKeepsOff) {
  HoldsReport report;
  report.holds = {atLogind("a", Effect::everySleep), atLogind("b", Effect::lidSleep),
                  atLogind("c", Effect::idleness)};
  const Lines lines = report.lines(kNow);
  EXPECT_EQ(lines.at(4), "    Keeps off:  every sleep");
  EXPECT_EQ(lines.at(10), "    Keeps off:  sleep by the lid");
  EXPECT_EQ(lines.at(16), "    Keeps off:  idleness, and the sleep that follows it");
}

TEST(HoldsReport, SaysThatNothingIsHeld) {
  EXPECT_EQ(HoldsReport().lines(kNow).back(), "  none");
}

TEST(HoldsReport, TellsProgramsTheSame) {
  HoldsReport report;
  report.canSleep = true;
  report.deciders = {logindThat(Decides::sleeps)};
  report.holds = {quietHold(), at("org.gnome.SessionManager", "Totem", Effect::idleness)};
  report.services = {"org.freedesktop.login1", "org.example.Silent"};
  report.silent = {"org.example.Silent"};
  EXPECT_EQ(
      report.json(kNow),
      R"({"version":1,"time":"2026-11-22T09:31:04Z","verdict":"held",)"
      R"("summary":"This machine would not go to sleep now: mpv holds it awake; else logind would )"
      R"(after 30 min (IdleAction is \"suspend\").","canSleep":true,"holds":[)"
      R"({"owner":"mpv","reason":"Playing","service":"org.freedesktop.login1",)"
      R"("keepsOff":"idle-sleep","user":"alice","process":4711,"program":"mpv",)"
      R"("since":"2026-11-22T06:11:04Z","does":"quiet","cpuPercent":null,)"
      R"("quietForSeconds":11525.0,"staylitSees":null},)"
      R"({"owner":"Totem","reason":"","service":"org.gnome.SessionManager",)"
      R"("keepsOff":"idleness","user":null,"process":null,"program":null,"since":null,)"
      R"("does":"unknown","cpuPercent":null,"quietForSeconds":null,"staylitSees":null}],)"
      R"("deciders":[{"name":"logind","does":"sleeps","afterSeconds":1800.0,)"
      R"("setting":"IdleAction is \"suspend\"","heeds":["org.freedesktop.login1"]}],)"
      R"("services":["org.freedesktop.login1","org.example.Silent"],)"
      R"("silentServices":["org.example.Silent"]})");
}

TEST(HoldsReport, TellsProgramsAVerdictInAWord) {
  HoldsReport report;
  const auto verdict = [&report] {
    const std::string json = report.json(kNow);
    const std::size_t begin = json.find("\"verdict\":\"") + 11;
    return json.substr(begin, json.find('"', begin) - begin);
  };
  EXPECT_EQ(verdict(), "unknown");
  report.deciders = {logindThat(Decides::nothing)};
  EXPECT_EQ(verdict(), "never");
  report.deciders = {logindThat(Decides::sleeps)};
  EXPECT_EQ(verdict(), "sleeps");
  report.holds = {atLogind("x")};
  EXPECT_EQ(verdict(), "held");
}

}  // namespace
}  // namespace staylit
