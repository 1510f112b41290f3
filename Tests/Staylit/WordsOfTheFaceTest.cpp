#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <variant>
#include <vector>

#include "Staylit/AppDelegate.h"
#include "Staylit/AppsLines.h"
#include "Staylit/AppsView.h"
#include "Staylit/MenuBarController.h"
#include "Staylit/Prefs.h"
#include "Staylit/SettingsView.h"
#include "Staylit/StatusReporter.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Fakes/FakeTranslator.h"
#include "Tests/Fakes/FakeUserInterface.h"
#include "Tidewell/Log.h"

namespace staylit {
namespace {

using tidewell::BusyApp;

constexpr const char* kBefore = "«";
constexpr const char* kAfter = "»";

/// The text without all that is between marks, and without the marks.
std::string untranslated(std::string text) {
  std::string rest;
  int depth = 0;
  while (!text.empty()) {
    const bool begins = text.starts_with(kBefore);
    const bool ends = text.starts_with(kAfter);
    if (begins) ++depth;
    if (ends) --depth;
    const std::size_t length = begins || ends ? std::string(kBefore).size() : 1;
    if (depth == 0 && !ends) rest += text.substr(0, length);
    text.erase(0, length);
  }
  return rest;
}

/// Everything is translated, into itself with marks around it.
class WordsOfTheFaceTest : public testing::Test {
 protected:
  void SetUp() override {
    Prefs::shared();
    translator.markAll(kBefore, kAfter);
  }

  void work() {
    BusyApp works;
    works.id = "make";
    works.display = "make";
    works.cpuPercent = 187;
    works.diskKBps = 20;
    works.netKBps = 10;
    BusyApp ignored = works;
    ignored.id = "ffmpeg";
    BusyApp quiet;
    quiet.id = quiet.display = "quiet";
    engine.busyApps().set({works, ignored, quiet});
    engine.assertingApps().set({"mpv"});
    fakes.defaults.stored["ignoredApps"] =
        std::vector<std::string>{"ffmpeg", "1", "2", "3", "4", "5", "6"};
  }

  void expectTranslated(const std::string& text) {
    // Figures are joined by a dot, which is the same everywhere.
    EXPECT_EQ(untranslated(text).find_first_not_of(" ·"), std::string::npos)
        << "nobody can translate all of: " << text;
  }

  tidewell::FakeTranslator translator;
  tidewell::FakePorts fakes;
  FakeUserInterface userInterface{fakes.calls};
  StaylitEngine engine{fakes.ports};
};

TEST_F(WordsOfTheFaceTest, OfTheMenuAreTranslated) {
  work();
  MenuBarController controller(engine, userInterface, fakes.ports);
  const std::vector<std::string> names = {"make", "quiet", "FFmpeg", "  mpv", "1",
                                          "2",    "3",     "4",      "5",     "6"};
  for (const bool isPaused : {false, true}) {
    engine.setPaused(isPaused);
    work();
    for (const MenuItem& item : controller.menuNeedsUpdate()) {
      const bool isName = std::ranges::find(names, item.title) != names.end();
      if (!isName) expectTranslated(item.title);
      expectTranslated(item.toolTip);
    }
  }
}

TEST_F(WordsOfTheFaceTest, OfTheStatusAreTranslatedForTheItemAlone) {
  for (const EngineStatus& status :
       {EngineStatus::holding({}), EngineStatus::holding({"make"}),
        EngineStatus::holding({"make", "ninja"}), EngineStatus::winding(45),
        EngineStatus::blocked("R", "«R»"), EngineStatus::idle(), EngineStatus::paused()}) {
    expectTranslated(status.shownSummary());
    EXPECT_EQ(status.summary().find(kBefore), std::string::npos) << status.summary();
  }
}

TEST_F(WordsOfTheFaceTest, OfTheReasonAreThoseOfTheUserInTheMenuAndTheSourceForPrograms) {
  StatusReporter reporter(engine, fakes.ports);
  fakes.powerSources.lowPowerMode = true;
  engine.tick();
  EXPECT_EQ(engine.status().get().shownSummary(), "«Not holding — «Low Power Mode is on»»");
  EXPECT_EQ(reporter.report().summary, "Not holding — Low Power Mode is on");
  EXPECT_EQ(reporter.report().reason, "Low Power Mode is on");
  EXPECT_EQ(engine.status().get(), EngineStatus::blocked("Low Power Mode is on"));
}

TEST_F(WordsOfTheFaceTest, StayTheSourceForProgramsTerminalsAndLogs) {
  MenuBarController controller(engine, userInterface, fakes.ports);
  StatusReporter reporter(engine, fakes.ports);
  engine.tick();
  engine.tick();
  EXPECT_EQ(fakes.power.liveNames(), std::vector<std::string>{"waiting for work to resume"});
  work();
  engine.status().set(EngineStatus::holding({"make", "mpv"}));
  fakes.mainLoop.runPosted();
  StatusReport report = reporter.report();
  for (const std::string& line : report.lines(fakes.clock.wallTime()))
    EXPECT_EQ(line.find(kBefore), std::string::npos) << line;
  EXPECT_EQ(report.json(fakes.clock.wallTime()).find(kBefore), std::string::npos);
  EXPECT_EQ(report.line().find(kBefore), std::string::npos);
  for (const std::string& line : fakes.log.lines())
    EXPECT_EQ(line.find(kBefore), std::string::npos) << line;
}

TEST_F(WordsOfTheFaceTest, OfChooseAppsAreTranslated) {
  work();
  AppsView view(engine, fakes.ports);
  const AppsView::Header header = view.header();
  for (const std::string_view text : {header.title, header.subtitle, header.searchPlaceholder})
    expectTranslated(std::string(text));
  for (const AppsView::Section& section : view.sections()) {
    for (const auto text : {section.title, section.subtitle, section.emptyText, section.moveHint})
      expectTranslated(std::string(text));
    for (const AppsView::Entry& entry : section.entries)
      expectTranslated(entry.detail.value_or(""));
  }
  expectTranslated(view.footer().text);
  expectTranslated(std::string(view.footer().button));
  view.watchEverything();
  expectTranslated(view.footer().text);

  AppsLine line;
  line.text = "make";
  line.isWorking = true;
  EXPECT_EQ(line.spokenName(), "«make, working now»");
}

TEST_F(WordsOfTheFaceTest, OfTheSettingsAreTranslated) {
  fakes.useLidSwitch();
  for (const std::int64_t grace : {30, 60, 120}) {
    fakes.defaults.stored["graceSeconds"] = grace;
    SettingsView view(engine, fakes.ports);
    for (const SettingsView::Section& section : view.form()) {
      expectTranslated(section.title);
      for (const SettingsView::Row& row : section.rows) {
        for (const std::string& text : {row.label, row.error, row.caption})
          expectTranslated(text);
        if (const auto* value = std::get_if<SettingsView::Value>(&row.content))
          expectTranslated(value->text);
        const auto* slider = std::get_if<SettingsView::Slider>(&row.content);
        if (!slider) continue;
        for (const std::string& text : {slider->text, slider->minimumText, slider->maximumText})
          expectTranslated(text);
      }
    }
  }
}

TEST_F(WordsOfTheFaceTest, OfNotificationsAreTranslated) {
  fakes.power.granted = false;
  AppDelegate delegate(fakes.ports, userInterface);
  delegate.applicationDidFinishLaunching();
  for (int look = 0; look < 20; ++look)
    delegate.engine()->tick();
  EXPECT_EQ(fakes.calls->count("tell: «The computer may fall asleep during the work»"), 1U);
  ASSERT_EQ(userInterface.told.size(), 1U);
  expectTranslated(userInterface.told.front());
}

}  // namespace
}  // namespace staylit
