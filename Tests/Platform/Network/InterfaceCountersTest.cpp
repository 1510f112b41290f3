#include "Platform/Linux/Network/InterfaceCounters.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

const std::string kHeadings =
    "Inter-|   Receive                                                |  Transmit\n"
    " face |bytes    packets errs drop fifo frame compressed multicast|bytes    packets errs drop "
    "fifo colls carrier compressed\n";

TEST(InterfaceCounters, SumsBothDirectionsOfAllInterfaces) {
  const testing::TemporaryFolder folder;
  const std::string file = folder.write(
      "dev",
      kHeadings +
          "    lo:    3267      29    0    0    0     0          0         0     3267      29 "
          "   0    0    0     0       0          0\n"
          "  eth0: 25260695     658    0    0    0     0          0         0    35254     434 "
          "   0    0    0     0       0          0\n");
  EXPECT_EQ(InterfaceCounters(file).sum(), 3267U + 3267U + 25260695U + 35254U);
}

TEST(InterfaceCounters, ReadsAColumnThatTouchesTheName) {
  const testing::TemporaryFolder folder;
  const std::string file = folder.write("dev", "wlan0:123456789 1 0 0 0 0 0 0 11 1 0 0 0 0 0 0\n");
  EXPECT_EQ(InterfaceCounters(file).sum(), 123456800U);
}

TEST(InterfaceCounters, ReadsAnInterfaceWithAColonInItsName) {
  const testing::TemporaryFolder folder;
  const std::string file = folder.write("dev", "eth0:1: 5 0 0 0 0 0 0 0 6 0 0 0 0 0 0 0\n");
  EXPECT_EQ(InterfaceCounters(file).sum(), 11U);
}

TEST(InterfaceCounters, ReadsAFileOfManyInterfaces) {
  const testing::TemporaryFolder folder;
  std::string text = kHeadings;
  for (int number = 0; number < 500; ++number) {
    text += "veth" + std::to_string(number) + ": 2 0 0 0 0 0 0 0 3 0 0 0 0 0 0 0\n";
  }
  EXPECT_EQ(InterfaceCounters(folder.write("dev", text)).sum(), 2500U);
}

TEST(InterfaceCounters, ReadsTheFileAnewEachTime) {
  const testing::TemporaryFolder folder;
  InterfaceCounters counters(folder.write("dev", "lo: 5 0 0 0 0 0 0 0 6 0\n"));
  EXPECT_EQ(counters.sum(), 11U);
  folder.write("dev", "lo: 5 0 0 0 0 0 0 0 7 0\n");
  EXPECT_EQ(counters.sum(), 12U);
}

TEST(InterfaceCounters, SkipsALineOfUnknownForm) {
  const testing::TemporaryFolder folder;
  EXPECT_EQ(InterfaceCounters(folder.write("dev", "lo: x\nlo:\n:\nlo: 4 0\n")).sum(), 4U);
}

TEST(InterfaceCounters, HasNoSumWithoutAFile) {
  const testing::TemporaryFolder folder;
  EXPECT_EQ(InterfaceCounters(folder.path("missing")).sum(), std::nullopt);
  EXPECT_EQ(InterfaceCounters(folder.write("empty", "")).sum(), std::nullopt);
}

TEST(InterfaceCounters, ReadsTheMachinesOwnInterfaces) {
  EXPECT_NE(InterfaceCounters().sum(), std::nullopt);
}

}  // namespace
}  // namespace platform
