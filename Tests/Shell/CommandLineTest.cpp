#include "Staylit/Desktop/CommandLine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace staylit {
namespace {

using Arguments = std::vector<std::string>;

TEST(CommandLine, AnswersQuestionsAboutTheProgramItself) {
  for (const char* option :
       {"--diagnose", "--pause", "--choose-apps", "--settings", "--background", "--quit",
        "--status", "--follow", "--holds", "--doctor", "--json", "--help", "--version"}) {
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

TEST(CommandLine, RequestsTheFirstActionThatIsNamed) {
  EXPECT_EQ(CommandLine(Arguments{"staylit"}).request().action, "");
  EXPECT_EQ(CommandLine(Arguments{"pause", "-settings", "--quit", "--pause"}).request().action,
            "quit");
}

TEST(CommandLine, AsksForNothingInTheBackgroundUnlessAnActionIsNamed) {
  EXPECT_FALSE(CommandLine(Arguments{"staylit"}).request().isBackground);
  EXPECT_TRUE(CommandLine(Arguments{"staylit", "--background"}).request().isBackground);
  const Arguments both{"staylit", "--background", "--settings"};
  EXPECT_FALSE(CommandLine(both).request().isBackground);
}

}  // namespace
}  // namespace staylit
