#include "Platform/Linux/Proc/LastRun.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>

#include "Platform/Linux/Proc/ProcFileSystem.h"
#include "Tests/Platform/Support/ChildProgram.h"

namespace platform {
namespace {

using testing::ChildProgram;

constexpr const char* kSched =
    "head (10818, #threads: 1)\n"
    "-------------------------------------------------------------------\n"
    "se.exec_start                                :      28410659.435734\n"
    "se.vruntime                                  :      12554940.889132\n";

TEST(LastRun, ReadsWhenAThreadRanLast) {
  EXPECT_EQ(parseLastRun(kSched), 28410.659);
}

TEST(LastRun, IsAbsentWhereTheKernelDoesNotTellIt) {
  EXPECT_EQ(parseLastRun(""), std::nullopt);
  EXPECT_EQ(parseLastRun("se.exec_start : 5.000000\n"), std::nullopt);  // the title
  EXPECT_EQ(parseLastRun("a\nse.exec_start\n"), std::nullopt);
  EXPECT_EQ(parseLastRun("a\nse.exec_start : \n"), std::nullopt);
  EXPECT_EQ(parseLastRun("a\nse.exec_start : -5.0\n"), std::nullopt);
  EXPECT_EQ(parseLastRun("a\nse.exec_start : 5\n"), std::nullopt);
  EXPECT_EQ(parseLastRun("a\nse.exec_start : 99999999999999999999.0\n"), std::nullopt);
}

TEST(LastRun, IsAbsentForAThreadThatWaitsOnAnotherProcessor) {
  EXPECT_EQ(parseLastRun("a\nse.exec_start : 0.000000\n"), std::nullopt);
}

TEST(LastRun, ReadsTheProcessorOfAThreadWhateverItsName) {
  const std::string fields =
      " S 1 2 2 0 -1 4194560 1 2 3 4 5 6 7 8 20 0 1 0 100 200 300 400 1 1 0 0 0 0 0 4096 17 0 0 0 "
      "17 3 0 0 0 0\n";
  EXPECT_EQ(parseProcessor("42 (a) b 9 9 (c)" + fields), 3);
  EXPECT_EQ(parseProcessor("42 (a" + fields), std::nullopt);
  EXPECT_EQ(parseProcessor("42 (a) S 1 2"), std::nullopt);
  EXPECT_EQ(parseProcessor(""), std::nullopt);
}

bool kernelTells() {
  ProcFileSystem proc;
  const auto text = proc.read(::getpid(), "sched");
  return text && parseLastRun(*text);
}

TEST(LastRun, GrowsWhileAProcessSleepsAndIsSmallForOneThatWorks) {
  if (!kernelTells()) GTEST_SKIP() << "the kernel has no sched files";
  cpu_set_t before;
  ASSERT_EQ(::sched_getaffinity(0, sizeof before, &before), 0);
  const ChildProgram sleeper({"sleep", "1000"});
  const ChildProgram worker({"sh", "-c", "while :; do :; done"});
  ProcFileSystem proc;
  const auto quiet = [&](const ChildProgram& program) {
    return timeSinceLastRun(proc, program.pid()).value_or(tidewell::Seconds(-1)).count();
  };
  for (int wait = 0; wait < 600 && quiet(sleeper) < 1; ++wait)
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  const double first = quiet(sleeper);
  EXPECT_GE(first, 1);
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  EXPECT_GE(quiet(sleeper), first + 0.4);
  // A machine in trouble may keep even who works from a processor for a while.
  double least = 1e9;
  for (int look = 0; look < 100 && least > 0.5; ++look)
    least = std::min(least, quiet(worker));
  EXPECT_GE(least, 0);
  EXPECT_LT(least, 0.5);
  cpu_set_t after;
  ASSERT_EQ(::sched_getaffinity(0, sizeof after, &after), 0);
  EXPECT_TRUE(CPU_EQUAL(&before, &after));
}

TEST(LastRun, IsAbsentForNoProcess) {
  ProcFileSystem proc;
  EXPECT_EQ(timeSinceLastRun(proc, 0x7FFFFFFF), std::nullopt);
}

}  // namespace
}  // namespace platform
