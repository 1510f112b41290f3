#include "Platform/Linux/Sleep/LogindHoldTimes.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdint>
#include <string>

#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

constexpr const char* kFile =
    "# This is private data. Do not parse.\n"
    "WHAT=idle\n"
    "MODE=block\n"
    "UID=1000\n"
    "PID=10\n"
    "WHO=Gr\\\"\\303\\266\\303\\237e $x \\\\ y\n"
    "WHY=a\\nb\\t\\303\\274nde\n"
    "FIFO=/run/systemd/inhibit/1.ref\n";

TEST(LogindHoldFile, SaysWhoseTheLockIs) {
  const auto file = parseLogindHoldFile(kFile);
  ASSERT_TRUE(file);
  EXPECT_EQ(file->what, "idle");
  EXPECT_EQ(file->who, "Gr\"öße $x \\ y");
  EXPECT_EQ(file->why, "a\nb\tünde");
  EXPECT_EQ(file->user, 1000U);
  EXPECT_EQ(file->process, 10U);
}

TEST(LogindHoldFile, ReadsTextsInQuotes) {
  const auto file =
      parseLogindHoldFile("WHAT=sleep\nUID=0\nPID=1\nWHO=\"a \\\"b\\\" \\$c\"\nWHY=\"\"\n");
  ASSERT_TRUE(file);
  EXPECT_EQ(file->who, "a \"b\" $c");
  EXPECT_EQ(file->why, "");
}

TEST(LogindHoldFile, IsAbsentWithoutWhatTellsALockFromOthers) {
  EXPECT_FALSE(parseLogindHoldFile(""));
  EXPECT_FALSE(parseLogindHoldFile("WHAT=idle\nUID=0\n"));
  EXPECT_FALSE(parseLogindHoldFile("WHAT=idle\nUID=root\nPID=1\n"));
  EXPECT_FALSE(parseLogindHoldFile("WHAT=idle\nUID=0\nPID=-1\n"));
  EXPECT_FALSE(parseLogindHoldFile("#WHAT=idle\nUID=0\nPID=1\n"));
}

TEST(LogindHoldFile, TakesABackslashAtTheEndAsItIs) {
  EXPECT_EQ(parseLogindHoldFile("WHAT=idle\nUID=0\nPID=1\nWHO=a\\")->who, "a\\");
}

class LogindHoldTimesTest : public ::testing::Test {
 protected:
  /// A lock's file, and its pipe, which was made so many seconds after 1970.
  void add(const std::string& name, const std::string& text, std::int64_t madeAt) const {
    folder.write(name, text);
    const std::string pipe = folder.path() / (name + ".ref");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const timespec times[] = {{madeAt, 0}, {madeAt, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, pipe.c_str(), times, 0), 0);
  }
  static ListedInhibitor listed(const std::string& who, std::uint32_t user, std::int64_t process) {
    ListedInhibitor inhibitor;
    inhibitor.holder = who;
    inhibitor.locks = "idle";
    inhibitor.user = user;
    inhibitor.processIdentifier = process;
    return inhibitor;
  }
  static std::string file(const std::string& who) {
    return "WHAT=idle\nUID=1000\nPID=10\nWHO=" + who + "\nWHY=\n";
  }

  testing::TemporaryFolder folder;
};

constexpr tidewell::WallTime at(std::int64_t since1970) {
  return tidewell::WallTime(std::chrono::seconds(since1970));
}

TEST_F(LogindHoldTimesTest, GivesEachLockTheTimeOfItsPipe) {
  add("1", file("a"), 500);
  add("2", file("b"), 400);
  LogindHoldTimes times(folder.path());
  EXPECT_EQ(times.take(listed("b", 1000, 10)), at(400));
  EXPECT_EQ(times.take(listed("a", 1000, 10)), at(500));
}

TEST_F(LogindHoldTimesTest, GivesEqualLocksTheirTimesOneAfterTheOther) {
  add("1", file("a"), 500);
  add("2", file("a"), 400);
  LogindHoldTimes times(folder.path());
  EXPECT_EQ(times.take(listed("a", 1000, 10)), at(400));
  EXPECT_EQ(times.take(listed("a", 1000, 10)), at(500));
  EXPECT_EQ(times.take(listed("a", 1000, 10)), std::nullopt);
}

TEST_F(LogindHoldTimesTest, HasNoTimeForALockThatIsAnother) {
  add("1", file("a"), 500);
  LogindHoldTimes times(folder.path());
  EXPECT_EQ(times.take(listed("b", 1000, 10)), std::nullopt);
  EXPECT_EQ(times.take(listed("a", 1001, 10)), std::nullopt);
  EXPECT_EQ(times.take(listed("a", 1000, 11)), std::nullopt);
  ListedInhibitor other = listed("a", 1000, 10);
  other.why = "else";
  EXPECT_EQ(times.take(other), std::nullopt);
  other = listed("a", 1000, 10);
  other.locks = "sleep";
  EXPECT_EQ(times.take(other), std::nullopt);
}

TEST_F(LogindHoldTimesTest, PassesOverWhatIsNoLock) {
  add("1", "nonsense", 500);
  folder.write("2", file("a"));  // Without a pipe.
  ASSERT_EQ(::mkfifo((folder.path() / "3.ref").c_str(), 0600), 0);
  LogindHoldTimes times(folder.path());
  EXPECT_EQ(times.take(listed("a", 1000, 10)), std::nullopt);
}

TEST_F(LogindHoldTimesTest, HasNoTimesWithoutTheFolder) {
  LogindHoldTimes times(folder.path() / "absent");
  EXPECT_EQ(times.take(listed("a", 1000, 10)), std::nullopt);
}

}  // namespace
}  // namespace platform
