// Processes end, or lose their number to others, during the pass that reads them.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "Tests/Tidewell/Accounting/ConservedTable.h"

namespace tidewell {
namespace {

class EndsDuringAPassTest : public ConservedTable {
 protected:
  /// Keeps the `count` lowest free numbers from other processes until `giveBack`.
  void occupy(int count) {
    for (int number = 0; number < count; ++number)
      occupied_.push_back(kernel.spawn(1, "/bin/placeholder"));
  }
  void giveBack() {
    for (const std::int32_t pid : occupied_)
      kernel.endAndReap(pid);
    occupied_.clear();
  }
  /// Lets `processes` end one after the other, right before `reader` is read.
  void endBeforeReading(std::int32_t reader, std::vector<std::int32_t> processes) {
    kernel.beforeReading = [this, reader, processes](std::int32_t pid) {
      if (pid != reader || !kernel.processes.contains(processes.front())) return;
      for (const std::int32_t process : processes)
        kernel.endAndReap(process);
    };
  }
  [[nodiscard]] Usage charged() const { return {kernel.charged, kernel.chargedDisk}; }

 private:
  std::vector<std::int32_t> occupied_;
};

TEST_F(EndsDuringAPassTest, CountsAGrandchildOnceIfItAndItsParentEndAfterTheyWereRead) {
  occupy(2);
  const auto make = kernel.spawn(1, "/bin/make");
  giveBack();
  const auto compiler = kernel.spawn(make, "/bin/cc1");
  const auto shell = kernel.spawn(make, "/bin/sh");
  kernel.processes.at(compiler).parent = shell;
  kernel.work(compiler, 50, 5);
  pass();
  endBeforeReading(make, {compiler, shell});
  pass();
  EXPECT_EQ(total, charged());
  EXPECT_EQ(used("cc1"), (Usage{50, 5}));
  EXPECT_EQ(listed.front(), 1);
  EXPECT_EQ(std::ranges::count(listed, compiler) + std::ranges::count(listed, shell), 0)
      << "ended processes are not listed";
}

TEST_F(EndsDuringAPassTest, CountsNewProcessesOnceThatEndWithAnOlderOneOfAHigherNumber) {
  occupy(2);
  const auto job = kernel.spawn(1, "/bin/job");
  const auto make = kernel.spawn(1, "/bin/make");
  kernel.processes.at(job).parent = make;
  kernel.work(job, 3, 30);
  giveBack();
  pass();
  const auto shell = kernel.spawn(make, "/bin/sh");
  const auto tool = kernel.spawn(shell, "/bin/tool");
  ASSERT_LT(tool, job) << "so the older process has the higher number";
  kernel.work(shell, 1, 10);
  kernel.work(tool, 7, 70);
  endBeforeReading(make, {tool, shell, job});
  pass();
  EXPECT_EQ(total, charged());
  EXPECT_EQ(used("tool"), (Usage{7, 70}));
  EXPECT_EQ(used("make"), Usage());
}

TEST_F(EndsDuringAPassTest, FindsTheReaperAmongNewProcessesAndOlderOnesOfHigherNumbers) {
  occupy(2);
  const auto job = kernel.spawn(1, "/bin/job");
  const auto make = kernel.spawn(1, "/bin/make");
  kernel.processes.at(job).parent = make;
  kernel.work(job, 3, 30);
  giveBack();
  pass();
  const auto tool = kernel.spawn(1, "/bin/tool");
  const auto shell = kernel.spawn(1, "/bin/sh");
  kernel.processes.at(tool).parent = shell;
  kernel.work(tool, 7, 70);
  // Each reaps its child right before it is read itself.
  kernel.beforeReading = [&](std::int32_t pid) {
    if (pid == shell && kernel.processes.contains(tool)) kernel.endAndReap(tool);
    if (pid == make && kernel.processes.contains(job)) kernel.endAndReap(job);
  };
  pass();
  EXPECT_EQ(total, charged());
  EXPECT_EQ(used("sh"), Usage());
  EXPECT_EQ(used("make"), Usage());
}

TEST_F(EndsDuringAPassTest, CountsAChildOnceIfItsReaperEndsAfterItWasRead) {
  occupy(2);
  const auto make = kernel.spawn(1, "/bin/make");
  giveBack();
  const auto tool = kernel.spawn(make, "/bin/tool");
  const auto shell = kernel.spawn(make, "/bin/sh");
  kernel.processes.at(tool).parent = shell;
  kernel.work(tool, 30, 3);
  pass();
  kernel.beforeReading = [&](std::int32_t pid) {
    if (pid == shell && kernel.processes.contains(tool)) kernel.endAndReap(tool);
    if (pid == make && kernel.processes.contains(shell)) kernel.endAndReap(shell);
  };
  pass();
  EXPECT_EQ(total, charged());
  EXPECT_EQ(used("tool"), (Usage{30, 3}));
  EXPECT_EQ(usedAtEnd("sh"), Usage());
}

// A process reaps on one pass and ends on the next.

class EndsAfterReaping : public EndsDuringAPassTest, public testing::WithParamInterface<bool> {};

TEST_P(EndsAfterReaping, ItsLastChildIsInTheChargeOfTheProcessThatReapedBoth) {
  const bool isNumberGivenOutAgain = GetParam();
  const auto make = kernel.spawn(1, "/bin/make");
  const auto shell = kernel.spawn(make, "/bin/sh");
  const auto first = kernel.spawn(shell, "/bin/first");
  const auto copier = kernel.spawn(shell, "/bin/cp");
  pass();
  kernel.work(first, 2);
  kernel.endAndReap(first);
  kernel.work(copier, 0, 500);
  pass();
  kernel.endAndReap(copier);
  kernel.endAndReap(shell);
  if (isNumberGivenOutAgain) {
    ASSERT_EQ(kernel.spawn(1, "/bin/other"), shell);
  }
  pass();
  EXPECT_EQ(total, charged());
  EXPECT_EQ(used("cp"), (Usage{0, 500}));
  EXPECT_EQ(used("make"), Usage());
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutItsNumber, EndsAfterReaping, testing::Bool());

TEST_F(EndsDuringAPassTest, CountsAWorkerOnceIfTheSixtyThreeShellsAboveItEndToo) {
  const auto make = kernel.spawn(1, "/bin/make");
  std::vector<std::int32_t> chain;
  for (auto parent = make; chain.size() < 63; parent = chain.back())
    chain.push_back(kernel.spawn(parent, "/bin/sh"));
  const auto worker = kernel.spawn(chain.back(), "/bin/worker");
  kernel.work(worker, 9, 90);
  pass();
  kernel.endAndReap(worker);
  while (!chain.empty()) {
    kernel.endAndReap(chain.back());
    chain.pop_back();
  }
  pass();
  EXPECT_EQ(total, charged());
  EXPECT_EQ(used("make"), Usage());
}

}  // namespace
}  // namespace tidewell
