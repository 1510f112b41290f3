#include "Platform/Linux/Processes/ProgramPath.h"

#include <gtest/gtest.h>

#include "Platform/Linux/Text/IcuText.h"

namespace platform {
namespace {

std::string named(std::string_view link, std::string_view comm) {
  IcuText text;
  return programPath(link, comm, text);
}

TEST(ProgramPath, IsTheLinkForAnUnknownProgram) {
  EXPECT_EQ(named("/usr/bin/vim.basic", "vim"), "/usr/bin/vim.basic");
}

TEST(ProgramPath, TakesTheCommThatTheCatalogueKnows) {
  EXPECT_EQ(named("/usr/bin/python3.11", "pip3"), "/usr/bin/pip3");
  EXPECT_EQ(named("/usr/lib/jvm/java-17/bin/java", "gradle"), "/usr/lib/jvm/java-17/bin/gradle");
  EXPECT_EQ(named("/opt/x/bin/node", "claude"), "/opt/x/bin/claude");
}

TEST(ProgramPath, CutsAVersionThatHidesAKnownName) {
  EXPECT_EQ(named("/usr/bin/python3.11", "script.py"), "/usr/bin/python3");
  EXPECT_EQ(named("/usr/lib/llvm-19/bin/clang-19", "x"), "/usr/lib/llvm-19/bin/clang");
  EXPECT_EQ(named("/usr/bin/node20", "MainThread"), "/usr/bin/node");
}

TEST(ProgramPath, KeepsAVersionOfAnUnknownName) {
  EXPECT_EQ(named("/usr/bin/x86_64-linux-gnu-gcc-12", "gcc"), "/usr/bin/x86_64-linux-gnu-gcc-12");
  EXPECT_EQ(named("/usr/bin/7z", "7z"), "/usr/bin/7z");
  EXPECT_EQ(named("/usr/bin/123", "123"), "/usr/bin/123");
}

TEST(ProgramPath, DoesNotLetTheCommOfAThreadHideTheProgram) {
  EXPECT_EQ(named("/usr/bin/ffmpeg", "av:h264:df0"), "/usr/bin/ffmpeg");
}

TEST(ProgramPath, CutsTheMarkOfADeletedFile) {
  EXPECT_EQ(named("/usr/bin/tool (deleted)", "tool"), "/usr/bin/tool");
  EXPECT_EQ(named("/usr/bin/python3.11 (deleted)", "x"), "/usr/bin/python3");
}

TEST(ProgramPath, IsCleanText) {
  EXPECT_EQ(named("/tmp/a\nb", "x"),
            "/tmp/a\xEF\xBF\xBD"
            "b");
  EXPECT_EQ(named("/tmp/\xff", "x"), "/tmp/\xEF\xBF\xBD");
  EXPECT_EQ(named("/tmp/two words (x)", "x"), "/tmp/two words (x)");
}

}  // namespace
}  // namespace platform
