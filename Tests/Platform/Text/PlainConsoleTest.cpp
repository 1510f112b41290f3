#include "Platform/Posix/PlainConsole.h"

#include <gtest/gtest.h>

#include "Tests/Fakes/FakeConsole.h"

namespace platform {
namespace {

TEST(PlainConsole, WritesWhatLooksAlikeForWhatAsciiLacks) {
  EXPECT_EQ(inAscii("Idle — your Mac can sleep"), "Idle - your Mac can sleep");
  EXPECT_EQ(inAscii("12% CPU · 340 KB/s disk …"), "12% CPU | 340 KB/s disk ...");
  EXPECT_EQ(inAscii("“a” → ‘b’"), "\"a\" -> 'b'");
}

TEST(PlainConsole, WritesOneQuestionMarkForEachOtherCharacter) {
  EXPECT_EQ(inAscii("Käse ☕ 漢字"), "K?se ? ??");
  EXPECT_EQ(inAscii("\xFF\xC3"), "??");
  EXPECT_EQ(inAscii(""), "");
}

TEST(PlainConsole, IsOtherwiseTheConsoleBehindIt) {
  tidewell::FakeConsole console;
  PlainConsole plain(console);
  plain.printLine("a — b");
  plain.writeError("ä\n");
  EXPECT_EQ(console.output, "a - b\n");
  EXPECT_EQ(console.error, "?\n");
  EXPECT_FALSE(plain.hasLostOutput());
  console.outputLost = console.outputTerminal = true;
  EXPECT_TRUE(plain.hasLostOutput());
  EXPECT_TRUE(plain.outputIsTerminal());
}

}  // namespace
}  // namespace platform
