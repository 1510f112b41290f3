#include "Staylit/Desktop/CommandLine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace staylit {
namespace {

using Arguments = std::vector<std::string>;

TEST(CommandLine, AnswersQuestionsAboutTheProgramItself) {
  for (const char* option : {"--diagnose", "--pause", "--resume", "--toggle-pause", "--choose-apps",
                             "--settings", "--background", "--quit", "--status", "--follow",
                             "--holds", "--doctor", "--json", "--help", "--version"}) {
    EXPECT_NE(CommandLine(Arguments{"staylit", "--help"}).information()->find(option),
              std::string::npos)
        << option;
  }
  EXPECT_TRUE(CommandLine(Arguments{"--version"}).information()->starts_with("Staylit "));
}

TEST(CommandLine, HasNoInformationForTheReportAndForTheProgramItself) {
  const Arguments report{"staylit", "--help", "--diagnose"};
  EXPECT_EQ(CommandLine(report).information(), std::nullopt);
  for (const char* other : {"-help", "--Help", "--helpful", "help", ""}) {
    EXPECT_EQ(CommandLine(Arguments{"staylit", other}).information(), std::nullopt) << other;
  }
}

TEST(CommandLine, RequestsTheWindowThatIsNamed) {
  EXPECT_EQ(CommandLine(Arguments{"staylit"}).request().action, "");
  EXPECT_EQ(CommandLine(Arguments{"staylit", "--settings"}).request().action, "settings");
  EXPECT_EQ(CommandLine(Arguments{"staylit", "--choose-apps"}).request().action, "choose-apps");
}

TEST(CommandLine, ReadsWhatTheRunningProgramIsToDo) {
  using Kind = ControlRequest::Kind;
  const auto control = [](const Arguments& arguments) { return CommandLine(arguments).control(); };
  EXPECT_EQ(control({"staylit", "--pause"}), (ControlRequest{Kind::pause, {}}));
  EXPECT_EQ(control({"staylit", "--pause", "2h"}),
            (ControlRequest{Kind::pause, tidewell::Seconds(7'200)}));
  EXPECT_EQ(control({"staylit", "--resume"}), (ControlRequest{Kind::resume, {}}));
  EXPECT_EQ(control({"staylit", "--toggle-pause"}), (ControlRequest{Kind::togglePause, {}}));
  EXPECT_EQ(control({"staylit", "--quit"}), (ControlRequest{Kind::quit, {}}));
  EXPECT_EQ(control({"staylit", "--settings"}), std::nullopt);
  EXPECT_EQ(control({"staylit", "--pause", "--diagnose"}), std::nullopt);
}

std::string complaint(const Arguments& arguments) {
  return CommandLine(arguments).complaint().value_or("");
}

TEST(CommandLine, RefusesWhatNoOptionIsAndNamesTheNearest) {
  EXPECT_TRUE(complaint({"staylit", "status"})
                  .starts_with("staylit: there is no option 'status'; --status "
                               "may be meant\n"));
  EXPECT_TRUE(complaint({"staylit", "--puase"}).find("; --pause may be meant") !=
              std::string::npos);
  EXPECT_TRUE(complaint({"staylit", "--pause=2h"}).find("--pause may be") != std::string::npos);
  EXPECT_TRUE(
      complaint({"staylit", "--explode"}).starts_with("staylit: there is no option '--explode'\n"));
  EXPECT_NE(complaint({"staylit", ""}), "");
  EXPECT_TRUE(complaint({"staylit", "-x"}).starts_with("staylit: there is no option '-x'\n"));
  EXPECT_EQ(complaint({"staylit", "-h"}), "");
  EXPECT_NE(complaint({"staylit", "--quit", "now"}), "");
}

TEST(CommandLine, RefusesALengthThatIsNone) {
  EXPECT_EQ(complaint({"staylit", "--pause", "2h"}), "");
  EXPECT_TRUE(
      complaint({"staylit", "--pause", "soon"}).starts_with("staylit: 'soon' is no length"));
  EXPECT_TRUE(complaint({"staylit", "--pause", "2"}).starts_with("staylit: '2' is no length"));
}

TEST(CommandLine, RefusesWhatDoesNotGoTogether) {
  EXPECT_TRUE(complaint({"staylit", "--pause", "--quit"})
                  .starts_with("staylit: --pause and --quit cannot be done at once\n"));
  EXPECT_NE(complaint({"staylit", "--follow"}), "");
  EXPECT_EQ(complaint({"staylit", "--json", "--holds"}), "");
  EXPECT_EQ(complaint({"staylit", "--json", "--history", "--since", "7d", "--until", "now"}), "");
  EXPECT_EQ(complaint({"staylit", "--history", "--since"}), "staylit: --since wants a time\n");
  EXPECT_EQ(complaint({"staylit", "--history", "--since", "--json"}),
            "staylit: --since wants a time\n");
  EXPECT_EQ(complaint({"staylit", "--since", "7d"}), "staylit: --since goes with --history\n");
  EXPECT_EQ(complaint({"staylit", "--json", "--doctor"}),
            "staylit: --json goes with --status, --holds, --history or --replay\n");
  EXPECT_EQ(complaint({"staylit", "--follow", "--status", "--json"}), "");
  EXPECT_EQ(complaint({"staylit", "--background", "--settings"}), "");
  EXPECT_EQ(complaint({"staylit", "--quit", "--quit"}), "");
}

TEST(CommandLine, TheMachinesProgramIsOnlyAskedOrStarted) {
  EXPECT_EQ(complaint({"staylit", "--system"}), "");
  EXPECT_EQ(complaint({"staylit", "--system", "--status", "--json"}), "");
  EXPECT_EQ(complaint({"staylit", "--system", "--diagnose"}), "");
  EXPECT_EQ(complaint({"staylit", "--pause", "--system"}),
            "staylit: --system goes alone, or with --diagnose or --status\n");
}

TEST(CommandLine, TakesTheFilesAndSettingsOfRecordings) {
  EXPECT_EQ(complaint({"staylit", "--record", "a.tape", "--anonymous"}), "");
  EXPECT_EQ(complaint({"staylit", "--record", "a.tape", "--ring"}), "");
  EXPECT_EQ(complaint({"staylit", "--replay"}), "");
  EXPECT_EQ(complaint({"staylit", "--replay", "status", "--set", "a=1", "--set", "b=2", "--json"}),
            "");
  EXPECT_NE(complaint({"staylit", "--record", "a.tape", "b.tape"}), "");
  EXPECT_NE(complaint({"staylit", "--record", "a.tape", "--replay", "a.tape"}), "");
  EXPECT_EQ(complaint({"staylit", "--set", "a=1"}), "staylit: --set goes with --replay\n");
  EXPECT_EQ(complaint({"staylit", "--replay", "--set"}), "staylit: --set wants KEY=VALUE\n");
  EXPECT_NE(complaint({"staylit", "--status", "--anonymous"}), "");
  EXPECT_NE(complaint({"staylit", "--holds", "--ring"}), "");
}

TEST(CommandLine, TheReportComesBeforeAllComplaints) {
  EXPECT_EQ(complaint({"staylit", "explode", "--diagnose", "--pause", "--quit"}), "");
  EXPECT_EQ(complaint({"--diagnose"}), "");
}

TEST(CommandLine, OnlyWarnsOfWhatIsAlmostTheReport) {
  for (const char* almost : {"-diagnose", "--Diagnose", "--diagnosed", "--diagnose=1"}) {
    const Arguments arguments{"staylit", almost};
    EXPECT_EQ(CommandLine(arguments).complaint(), std::nullopt) << almost;
    EXPECT_EQ(CommandLine(arguments).warning(),
              std::string("staylit: '") + almost + "' is not --diagnose, so Staylit starts\n");
  }
  EXPECT_EQ(CommandLine(Arguments{"staylit", "--background"}).warning(), std::nullopt);
  EXPECT_EQ(CommandLine(Arguments{"staylit", "--diagnose", "-diagnose"}).warning(), std::nullopt);
  EXPECT_NE(complaint({"staylit", "diagnose"}), "") << "a bare word never started the report";
}

TEST(CommandLine, AsksForNothingInTheBackgroundUnlessAnActionIsNamed) {
  EXPECT_FALSE(CommandLine(Arguments{"staylit"}).request().isBackground);
  EXPECT_TRUE(CommandLine(Arguments{"staylit", "--background"}).request().isBackground);
  const Arguments both{"staylit", "--background", "--settings"};
  EXPECT_FALSE(CommandLine(both).request().isBackground);
}

TEST(CommandLine, MakesAPageOfTheHistoryOnly) {
  EXPECT_EQ(complaint({"staylit", "--history", "--html", "-"}), "");
  EXPECT_EQ(complaint({"staylit", "--history", "--open", "--since", "7d"}), "");
  EXPECT_EQ(complaint({"staylit", "--open"}), "staylit: --open goes with --history\n");
  EXPECT_EQ(complaint({"staylit", "--history", "--json", "--open"}),
            "staylit: --json is no web page\n");
  EXPECT_EQ(complaint({"staylit", "--history", "--html"}),
            "staylit: --html wants a file, or - for standard output\n");
  EXPECT_EQ(complaint({"staylit", "--history", "--html", "--open"}),
            "staylit: --html wants a file, or - for standard output\n");
}

}  // namespace
}  // namespace staylit
