#include "Staylit/StatusReport.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <iterator>
#include <string>
#include <vector>

namespace staylit {
namespace {

using namespace std::chrono_literals;
using tidewell::AppCategory;
using tidewell::WallTime;
using Lines = std::vector<std::string>;
using State = StatusReport::State;

constexpr WallTime kNine = std::chrono::sys_days(std::chrono::year(2026) / 11 / 22) + 9h;

/// Two applications at work, of which one is not for long enough yet, and one that asks.
StatusReport holding() {
  StatusReport report;
  report.state = State::holding;
  report.summary = "Awake for ffmpeg +1 more";
  report.since = kNine;
  report.reason = "ffmpeg and 1 more are working";
  report.names = {"ffmpeg", "mpv"};
  report.services = {{"org.gnome.SessionManager", std::nullopt},
                     {"org.freedesktop.login1", kNine + 90s}};
  report.busy = {{"ffmpeg", "ffmpeg", AppCategory::videoAudio, 187.24, 0, 0, 14.9}};
  report.candidates = {{"rsync", "rsync", AppCategory::syncBackup, 2, 700, 0, 6.5}};
  report.sustainSeconds = 10;
  report.asking = {"mpv"};
  report.power = {false, 80, false, true};
  return report;
}

StatusReport idle() {
  StatusReport report;
  report.summary = "Idle — your Mac can sleep";
  report.since = kNine;
  report.sustainSeconds = 10;
  report.power = {true, 100, false, false};
  return report;
}

StatusReport winding() {
  StatusReport report = idle();
  report.state = State::winding;
  report.summary = "Work stopped — releasing in 45s";
  report.reason = "waiting for work to resume";
  report.releasesIn = 45;
  report.services = {{"org.freedesktop.login1", std::nullopt}};
  return report;
}

StatusReport blocked() {
  StatusReport report = holding();
  report.state = State::blocked;
  report.summary = "Not holding — battery below 20%";
  report.reason = "battery below 20%";
  report.names.clear();
  report.services.clear();
  report.power.percentage = 19;
  return report;
}

class StatusReportTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(setenv("TZ", "UTC0", 1), 0); }
};

TEST_F(StatusReportTest, SaysAllAboutAHold) {
  EXPECT_EQ(holding().lines(kNine + 2h + 10min + 5s),
            (Lines{"Awake for ffmpeg +1 more", "Since:      09:00:00 (2 h 10 min)",
                   "Reason:     ffmpeg and 1 more are working",
                   "Held by:    org.gnome.SessionManager (not read back yet)",
                   "            org.freedesktop.login1 (read back at 09:01:30)",
                   "Power:      80% · battery · lowPower=false", "",
                   "Staying awake for (1):", "  ffmpeg — 187% CPU, for 14 s", "",
                   "Over a threshold, not for long enough yet (1):",
                   "  rsync — 2% CPU · 700 KB/s disk, over for 6 of 10 s", "",
                   "Asked to stay awake (1):", "  mpv"}));
}

TEST_F(StatusReportTest, SaysLittleOfAQuietMachine) {
  EXPECT_EQ(idle().lines(kNine + 14s),
            (Lines{"Idle — your Mac can sleep", "Since:      09:00:00 (14 s)",
                   "Power:      no battery · AC · lowPower=false"}));
}

TEST_F(StatusReportTest, SaysThatTheHoldGoesOnAfterTheWork) {
  EXPECT_EQ(winding().lines(kNine + 75s),
            (Lines{"Work stopped — releasing in 45s", "Since:      09:00:00 (1 min 15 s)",
                   "Reason:     waiting for work to resume",
                   "Held by:    org.freedesktop.login1 (not read back yet)",
                   "Power:      no battery · AC · lowPower=false"}));
}

TEST_F(StatusReportTest, SaysThatNobodyGrantsTheHold) {
  StatusReport report = winding();
  report.services.clear();
  EXPECT_FALSE(report.isHeld());
  EXPECT_EQ(report.lines(kNine)[3],
            "Held by:    nobody. No service of the system grants the hold — your Mac can sleep");
  EXPECT_EQ(report.line(),
            "Work stopped — releasing in 45s  |  No service of the system grants the hold — your "
            "Mac can sleep");
}

TEST_F(StatusReportTest, SaysWhatWorksThoughTheHoldIsForbidden) {
  EXPECT_EQ(blocked().lines(kNine),
            (Lines{"Not holding — battery below 20%", "Since:      09:00:00 (0 s)",
                   "Reason:     battery below 20%", "Power:      19% · battery · lowPower=false",
                   "", "At work (1):", "  ffmpeg — 187% CPU, for 14 s", "",
                   "Over a threshold, not for long enough yet (1):",
                   "  rsync — 2% CPU · 700 KB/s disk, over for 6 of 10 s", "",
                   "Asked to stay awake (1):", "  mpv"}));
}

TEST_F(StatusReportTest, SaysThatWhatItSawIsFromBeforeThePause) {
  StatusReport report = blocked();
  report.state = State::paused;
  report.summary = "Paused";
  report.reason.clear();
  EXPECT_EQ(
      report.lines(kNine),
      (Lines{"Paused", "Since:      09:00:00 (0 s)", "Power:      19% · battery · lowPower=false",
             "", "At work, before the pause (1):", "  ffmpeg — 187% CPU, for 14 s", "",
             "Over a threshold, not for long enough yet, before the pause (1):",
             "  rsync — 2% CPU · 700 KB/s disk, over for 6 of 10 s", "",
             "Asked to stay awake, before the pause (1):", "  mpv"}));
}

TEST_F(StatusReportTest, SaysInOneLineWhatWorks) {
  EXPECT_EQ(holding().line(),
            "Awake for ffmpeg +1 more  |  ffmpeg: 187% CPU  |  mpv: asked to stay awake");
  EXPECT_EQ(idle().line(), "Idle — your Mac can sleep");
  EXPECT_EQ(blocked().line(), "Not holding — battery below 20%");
}

TEST_F(StatusReportTest, SaysTheOwnWordsOfWhoAsks) {
  StatusReport report = holding();
  report.asking = {"mpv", "systemd-inhibit"};
  report.askingWords = {{"systemd-inhibit", "Backup tool: Nightly backup"}};
  const std::vector<std::string> lines = report.lines(kNine);
  EXPECT_EQ(*std::prev(lines.end(), 2), "  mpv");
  EXPECT_EQ(lines.back(), "  systemd-inhibit (Backup tool: Nightly backup)");
  EXPECT_NE(report.json(kNine).find(
                R"("asking":["mpv","systemd-inhibit"],"askingWords":[{"name":"systemd-inhibit",)"
                R"("words":"Backup tool: Nightly backup"}],)"),
            std::string::npos);
}

TEST_F(StatusReportTest, TellsProgramsAllAboutAHold) {
  EXPECT_EQ(
      holding().json(kNine + 7'805s + 999ms),
      R"({"version":1,"state":"holding","held":true,"summary":"Awake for ffmpeg +1 more",)"
      R"("since":"2026-11-22T09:00:00Z","forSeconds":7805,)"
      R"("reason":"ffmpeg and 1 more are working","releasesInSeconds":null,"resumesAt":null,)"
      R"("names":["ffmpeg","mpv"],)"
      R"("services":[{"name":"org.gnome.SessionManager","seenAt":null},)"
      R"({"name":"org.freedesktop.login1","seenAt":"2026-11-22T09:01:30Z"}],)"
      R"("busy":[{"id":"ffmpeg","name":"ffmpeg","doing":"187% CPU","cpuPercent":187.2,)"
      R"("diskKBps":0.0,"netKBps":0.0,"busyForSeconds":14.9}],)"
      R"("candidates":[{"id":"rsync","name":"rsync","doing":"2% CPU · 700 KB/s disk",)"
      R"("cpuPercent":2.0,"diskKBps":700.0,"netKBps":0.0,"overForSeconds":6.5,)"
      R"("neededSeconds":10}],"asking":["mpv"],"askingWords":[],"serves":"session",)"
      R"("power":{"onAC":false,"hasBattery":true,"batteryPercent":80,"lowPowerMode":false}})");
}

TEST_F(StatusReportTest, TellsProgramsOfAQuietMachine) {
  EXPECT_EQ(
      idle().json(kNine - 5s),
      R"({"version":1,"state":"idle","held":false,"summary":"Idle — your Mac can sleep",)"
      R"("since":"2026-11-22T09:00:00Z","forSeconds":0,"reason":"",)"
      R"("releasesInSeconds":null,"resumesAt":null,"names":[],"services":[],"busy":[],"candidates":[],)"
      R"("asking":[],"askingWords":[],"serves":"session",)"
      R"("power":{"onAC":true,"hasBattery":false,"batteryPercent":null,)"
      R"("lowPowerMode":false}})");
}

TEST_F(StatusReportTest, TellsProgramsWhenTheHoldWillEnd) {
  const std::string json = winding().json(kNine);
  EXPECT_NE(json.find(R"("state":"winding","held":true)"), std::string::npos) << json;
  EXPECT_NE(json.find(R"("releasesInSeconds":45)"), std::string::npos) << json;
}

TEST_F(StatusReportTest, TellsWhenAPauseEnds) {
  StatusReport report = idle();
  report.state = StatusReport::State::paused;
  report.resumesAt = kNine + 2h;
  const std::string line = report.lines(kNine)[2];
  EXPECT_TRUE(line.starts_with("Until:      ")) << line;
  const std::string json = report.json(kNine);
  EXPECT_NE(json.find(R"("resumesAt":"2026-11-22T11:00:00Z")"), std::string::npos) << json;
}

TEST_F(StatusReportTest, SaysThatTheWholeMachineIsServed) {
  StatusReport report = idle();
  report.servesMachine = true;
  EXPECT_EQ(report.lines(kNine)[2], "Serves:     the whole machine");
  const std::string json = report.json(kNine);
  EXPECT_NE(json.find(R"(,"serves":"machine",)"), std::string::npos) << json;
}

TEST_F(StatusReportTest, FiguresAndACountdownAreNoChange) {
  StatusReport later = holding();
  later.summary = "Awake for mpv +1 more";
  later.names = {"mpv", "ffmpeg"};
  later.services[0].seenAt = kNine + 3s;
  later.busy[0].cpuPercent = 3;
  later.candidates.clear();
  later.power.percentage = 70;
  EXPECT_TRUE(holding().saysTheSameAs(later));
  later = winding();
  later.releasesIn = 5;
  EXPECT_TRUE(winding().saysTheSameAs(later));
}

TEST_F(StatusReportTest, WhatElseIsSaidIsAChange) {
  EXPECT_FALSE(holding().saysTheSameAs(blocked()));
  const auto differs = [](void (*change)(StatusReport&)) {
    StatusReport later = holding();
    change(later);
    return !holding().saysTheSameAs(later);
  };
  EXPECT_TRUE(differs([](StatusReport& report) { report.state = State::winding; }));
  EXPECT_TRUE(differs([](StatusReport& report) { report.reason = "mpv is working"; }));
  EXPECT_TRUE(differs([](StatusReport& report) { report.names[1] = "make"; }));
  EXPECT_TRUE(differs([](StatusReport& report) { report.services.pop_back(); }));
  EXPECT_TRUE(differs([](StatusReport& report) { report.power.onAC = true; }));
  EXPECT_TRUE(differs([](StatusReport& report) { report.power.hasBattery = false; }));
  EXPECT_TRUE(differs([](StatusReport& report) { report.power.lowPowerMode = true; }));
}

TEST_F(StatusReportTest, EveryStateHasANameOfItsOwn) {
  for (const auto& [state, name] :
       {std::pair(State::holding, "holding"), std::pair(State::winding, "winding"),
        std::pair(State::blocked, "blocked"), std::pair(State::idle, "idle"),
        std::pair(State::paused, "paused")}) {
    EXPECT_EQ(nameOf(state), name);
    EXPECT_EQ(stateNamed(name), state);
  }
  EXPECT_EQ(stateNamed("absent"), std::nullopt);
  EXPECT_EQ(stateNamed("Idle"), std::nullopt);
}

}  // namespace
}  // namespace staylit
