#include "Platform/Linux/Applications/ExecWords.h"

#include <gtest/gtest.h>

#include "Platform/Linux/Applications/Launchers.h"

namespace platform {
namespace {

using Words = std::vector<std::string>;

TEST(ExecWords, SplitsAtBlanks) {
  EXPECT_EQ(execWords("editor --new  %U\t"), (Words{"editor", "--new", "%U"}));
  EXPECT_EQ(execWords(" x"), Words{"x"});
}

TEST(ExecWords, HasNoWordsInAnEmptyLine) {
  EXPECT_EQ(execWords(""), Words{});
  EXPECT_EQ(execWords(" \t"), Words{});
}

TEST(ExecWords, KeepsQuotedBlanks) {
  EXPECT_EQ(execWords("\"/opt/Two Words/run\" \"a b\"c"), (Words{"/opt/Two Words/run", "a bc"}));
  EXPECT_EQ(execWords("\"\" x"), (Words{"", "x"}));
}

TEST(ExecWords, UndoesBackslashesInQuotesOnly) {
  EXPECT_EQ(execWords(R"("a\"b\\c\$d" e\f)"), (Words{"a\"b\\c$d", "e\\f"}));
}

TEST(ExecWords, HasNoWordsWhenAQuoteStaysOpen) {
  EXPECT_EQ(execWords("x \"y"), Words{});
  EXPECT_EQ(execWords("\"x\\"), Words{});
}

TEST(Launchers, AreShellsInterpretersAndStarters) {
  for (const char* name : {"sh", "bash", "env", "python3", "python3.11", "perl5.36.0", "node-18",
                           "ruby3.1", "java", "flatpak", "snap", "xdg-open", "gtk-launch", "sudo",
                           "pkexec", "php8.2", "electron28", "wine64"}) {
    EXPECT_TRUE(isLauncher(name)) << name;
  }
}

TEST(Launchers, AreNotOtherPrograms) {
  for (const char* name :
       {"", "3", "firefox", "bashful", "gimp-2.10", "steam", "snapshot", "shotwell"}) {
    EXPECT_FALSE(isLauncher(name)) << name;
  }
}

}  // namespace
}  // namespace platform
