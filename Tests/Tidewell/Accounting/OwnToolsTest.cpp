// The program is one of the processes itself. The work of the tools that it runs is not counted.

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "Tests/Tidewell/Accounting/ConservedTable.h"

namespace tidewell {
namespace {

class OwnToolsTest : public ConservedTable {
 protected:
  OwnToolsTest() : ConservedTable(ProcessItself{2}) {}

  /// Call this before any other process is spawned: the program must get the number 2.
  std::int32_t startProgram() { return kernel.spawn(1, "/bin/program"); }
};

using Names = std::vector<std::string>;

TEST_F(OwnToolsTest, AToolIsNotListed) {
  const auto program = startProgram();
  pass();
  const auto tool = kernel.spawn(program, "/bin/tool");
  kernel.work(tool, 3, 30);
  pass();
  EXPECT_EQ(names(), (Names{"init", "program"}));
}

TEST_F(OwnToolsTest, AToolThatWasSeenLeavesNothingWhenItEnds) {
  const auto program = startProgram();
  pass();
  const auto tool = kernel.spawn(program, "/bin/tool");
  kernel.work(tool, 3, 30);
  pass();
  kernel.work(tool, 2, 20);
  kernel.endAndReap(tool);
  pass();
  pass();
  EXPECT_EQ(names(), (Names{"init", "program"}));
  EXPECT_EQ(total, Usage());
}

TEST_F(OwnToolsTest, AToolThatWasNeverSeenIsNoWorkOfTheProgram) {
  const auto program = startProgram();
  pass();
  for (int run = 0; run < 5; ++run) {
    const auto tool = kernel.spawn(program, "/bin/tool");
    kernel.work(tool, 3, 30);
    kernel.endAndReap(tool);
    pass();
  }
  EXPECT_EQ(total, Usage());
}

TEST_F(OwnToolsTest, AChildOfAToolIsNotListedEither) {
  const auto program = startProgram();
  pass();
  const auto tool = kernel.spawn(program, "/bin/tool");
  const auto helper = kernel.spawn(tool, "/bin/helper");
  kernel.work(helper, 3, 30);
  pass();
  EXPECT_EQ(names(), (Names{"init", "program"}));
  kernel.endAndReap(helper);
  kernel.endAndReap(tool);
  pass();
  pass();
  EXPECT_EQ(total, Usage());
}

TEST_F(OwnToolsTest, TheHeirOfAToolsChildIsNotCreditedWithWhatWasSeenOfTheChild) {
  const auto program = startProgram();
  pass();
  const auto tool = kernel.spawn(program, "/bin/tool");
  const auto helper = kernel.spawn(tool, "/bin/helper");
  kernel.work(helper, 3, 30);
  pass();
  kernel.endAndReap(tool);
  pass();
  kernel.endAndReap(helper);
  pass();
  pass();
  EXPECT_EQ(total, Usage());
}

TEST_F(OwnToolsTest, TheTimeOfTheProgramItselfCounts) {
  const auto program = startProgram();
  pass();
  kernel.work(program, 3);
  const auto tool = kernel.spawn(program, "/bin/tool");
  kernel.work(tool, 5, 50);
  kernel.endAndReap(tool);
  pass();
  EXPECT_EQ(used("program").time, 3U);
}

TEST_F(OwnToolsTest, TheBytesOfTheProgramItselfCount) {
  const auto program = startProgram();
  pass();
  kernel.work(program, 3, 5000);
  pass();
  EXPECT_EQ(counted["program"], (Usage{3, 5000}));
}

// A shell may start a job and then become the program by an exec. So the program has a child.
TEST_F(OwnToolsTest, AChildThatIsOlderThanTheFirstPassIsNoTool) {
  const auto program = startProgram();
  const auto job = kernel.spawn(program, "/bin/job");
  kernel.work(job, 3, 30);
  pass();
  EXPECT_EQ(used("job"), (Usage{3, 30}));
  kernel.work(job, 1, 10);
  kernel.endAndReap(job);
  pass();
  EXPECT_EQ(used("job"), (Usage{4, 40})) << "with its last stretch";
}

class OwnToolsOfTheFirstProcess : public ConservedTable {
 protected:
  OwnToolsOfTheFirstProcess() : ConservedTable(ProcessItself{1}) {}
};

// In a container the program may be the first process, which inherits all orphans.
TEST_F(OwnToolsOfTheFirstProcess, AnOrphanIsNoTool) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  pass();
  const auto job = kernel.spawn(shell, "/bin/job");
  kernel.work(job, 3, 30);
  kernel.endAndReap(shell);
  pass();
  EXPECT_EQ(used("job"), (Usage{3, 30}));
}

}  // namespace
}  // namespace tidewell
