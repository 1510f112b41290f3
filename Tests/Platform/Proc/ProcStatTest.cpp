#include "Platform/Linux/Proc/ProcStat.h"

#include <gtest/gtest.h>

#include "Platform/Linux/Proc/ProcIo.h"

namespace platform {
namespace {

std::string line(const std::string& comm) {
  return "4711 (" + comm +
         ") S 12 4711 4700 34816 -1 4194560 10 20 30 40 111 222 333 444 20 0 5 0 987654 1 2 3\n";
}

TEST(ProcStat, ReadsTheFieldsAfterTheName) {
  const auto stat = parseProcStat(line("bash"));
  ASSERT_TRUE(stat);
  EXPECT_EQ(stat->comm, "bash");
  EXPECT_EQ(stat->state, 'S');
  EXPECT_EQ(stat->parentPid, 12);
  EXPECT_EQ(stat->session, 4700);
  EXPECT_EQ(stat->terminal, 34816);
  EXPECT_EQ(stat->userTicks, 111u);
  EXPECT_EQ(stat->systemTicks, 222u);
  EXPECT_EQ(stat->childUserTicks, 333u);
  EXPECT_EQ(stat->childSystemTicks, 444u);
  EXPECT_EQ(stat->startTicks, 987654u);
}

TEST(ProcStat, ReadsTheNameUpToTheLastParenthesis) {
  for (const std::string comm : {"a b", "a) S 1 (b", "(sd-pam)", "new\nline", "", "\xff\xfe"}) {
    const auto stat = parseProcStat(line(comm));
    ASSERT_TRUE(stat) << comm;
    EXPECT_EQ(stat->comm, comm);
    EXPECT_EQ(stat->startTicks, 987654u);
  }
}

TEST(ProcStat, RefusesATextThatIsCutOff) {
  const std::string whole = line("bash");
  EXPECT_FALSE(parseProcStat(""));
  EXPECT_FALSE(parseProcStat("4711"));
  EXPECT_FALSE(parseProcStat("4711 )bash( S 1"));
  EXPECT_FALSE(parseProcStat(whole.substr(0, 40)));
  EXPECT_FALSE(parseProcStat(whole.substr(0, whole.find("987654"))));
}

TEST(ProcStat, RefusesFieldsThatAreNotNumbers) {
  EXPECT_FALSE(parseProcStat("1 (a) S x 1 1 0 -1 0 1 1 1 1 1 1 1 1 20 0 1 0 5"));
  EXPECT_FALSE(parseProcStat("1 (a) S 1 1 1 0 -1 0 1 1 1 1 1 1 1 1 20 0 1 0 -5"));
  EXPECT_FALSE(
      parseProcStat("1 (a) S 1 1 1 0 -1 0 1 1 1 1 99999999999999999999999 1 1 1 20 0 1 0 5"));
}

TEST(ProcIo, ReadsTheBytesThatWentToADevice) {
  const auto io = parseProcIo(
      "rchar: 1\nwchar: 2\nsyscr: 3\nsyscw: 4\nread_bytes: 4096\nwrite_bytes: 8192\n"
      "cancelled_write_bytes: 5\n");
  ASSERT_TRUE(io);
  EXPECT_EQ(io->readBytes, 4096u);
  EXPECT_EQ(io->writeBytes, 8192u);
}

TEST(ProcIo, DoesNotCountCancelledBytesAsWritten) {
  EXPECT_FALSE(parseProcIo("rchar: 1\nread_bytes: 4096\ncancelled_write_bytes: 5\n"));
}

TEST(ProcIo, RefusesAnEmptyOrBrokenFile) {
  EXPECT_FALSE(parseProcIo(""));
  EXPECT_FALSE(parseProcIo("x\nread_bytes: \nwrite_bytes: 1\n"));
  EXPECT_FALSE(parseProcIo("x\nread_bytes: 99999999999999999999999\nwrite_bytes: 1\n"));
}

}  // namespace
}  // namespace platform
