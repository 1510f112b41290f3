// Tests that reading and setting a value does not wait for the disk.

#include "Platform/Linux/Settings/SettingsKeeper.h"

#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <thread>

#include "Platform/Linux/Settings/SettingsFile.h"
#include "Tests/Platform/Settings/IntegerValue.h"
#include "Tests/Platform/Settings/SettingsFolder.h"

namespace platform {
namespace {

using tidewell::PropertyValue;

/// How often the file was replaced while a person moved a slider.
TEST(SettingsKeeper, WritesManyValuesInQuickSuccessionOnlyAFewTimes) {
  const SettingsFolder folder;
  SettingsKeeper::Timing timing = SettingsFolder::patient();
  timing.writePause = std::chrono::hours(1);
  SettingsKeeper keeper(folder.file(), timing);
  keeper.set("grace", integer(1));
  keeper.finish();
  const FileStamp first = SettingsFile(folder.file()).stamp();
  for (int step = 2; step <= 60; ++step) {
    keeper.set("grace", integer(step));
    EXPECT_EQ(keeper.value("grace"), integer(step));
  }
  EXPECT_EQ(SettingsFile(folder.file()).stamp(), first);
  keeper.finish();
  EXPECT_EQ(folder.read(), "grace = 60\n");
}

TEST(SettingsKeeper, WritesTheLastValueByItself) {
  const SettingsFolder folder;
  SettingsKeeper keeper(folder.file(), SettingsFolder::patient());
  for (int step = 1; step <= 60; ++step)
    keeper.set("grace", integer(step));
  while (folder.read() != "grace = 60\n")
    keeper.value("grace");
}

TEST(SettingsKeeper, WritesEverythingBeforeItIsDestroyed) {
  const SettingsFolder folder;
  SettingsKeeper::Timing timing = SettingsFolder::patient();
  timing.writePause = std::chrono::hours(1);
  {
    SettingsKeeper keeper(folder.file(), timing);
    for (int step = 1; step <= 60; ++step)
      keeper.set("grace", integer(step));
  }
  EXPECT_EQ(folder.read(), "grace = 60\n");
}

TEST(SettingsKeeper, DoesNotWaitForALockThatAnotherProcessHolds) {
  const SettingsFolder folder;
  SettingsKeeper keeper(folder.file(), SettingsFolder::patient());
  {
    const FolderLock held = SettingsFile(folder.file()).lock();
    keeper.set("a", integer(1));
    // A wait for the lock in vain would have been logged.
    EXPECT_TRUE(folder.logged().empty());
    EXPECT_EQ(keeper.value("a"), integer(1));
    EXPECT_FALSE(std::filesystem::exists(folder.file()));
  }
  keeper.finish();
  EXPECT_EQ(folder.read(), "a = 1\n");
}

TEST(SettingsKeeper, WaitsAtTheEndForALockThatAnotherProcessHoldsForLong) {
  const SettingsFolder folder;
  const SettingsFile file(folder.file());
  std::optional<FolderLock> held(std::in_place, folder.path(""));
  SettingsKeeper keeper(folder.file(), SettingsFolder::patient());
  keeper.set("a", integer(1));
  std::thread holder([&] {
    // Waits as long as the keeper does, so that the keeper's first attempts have ended afterwards.
    for (int attempt = 0; attempt < 3; ++attempt)
      EXPECT_NE(file.lock().error(), "");
    held.reset();
  });
  keeper.finish();
  EXPECT_EQ(folder.read(), "a = 1\n");
  holder.join();
}

TEST(SettingsKeeper, GivesItsThreadThePriorityOfTheThreadThatWaitsForIt) {
  const SettingsFolder folder;
  SettingsKeeper keeper(folder.file(), SettingsFolder::patient());
  keeper.value("a");
  int found = 0;
  for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
    if (SettingsFolder::read(thread.path() / "comm") != "staylit-setting\n") continue;
    ++found;
    const auto number = static_cast<id_t>(std::stoi(thread.path().filename()));
    EXPECT_EQ(getpriority(PRIO_PROCESS, number), getpriority(PRIO_PROCESS, 0));
  }
  EXPECT_EQ(found, 1);
}

TEST(SettingsKeeper, LosesNoEditThatOthersMakeWhileItWrites) {
  const SettingsFolder folder;
  folder.write("hand = 0\n");
  SettingsKeeper keeper(folder.file(), SettingsFolder::patient());
  std::string kept;
  for (int round = 1; round <= 200; ++round) {
    keeper.set("own", integer(round));
    // Writes in place, like a shell's ">>".
    std::ofstream(folder.file(), std::ios::app) << "hand" << round << " = 1\n";
  }
  keeper.finish();
  for (int round = 1; round <= 200; ++round)
    EXPECT_EQ(keeper.value("hand" + std::to_string(round)), integer(1)) << round;
  EXPECT_EQ(keeper.value("own"), integer(200));
}

/// The number of descriptors that each thread of this process sees beyond the standard ones.
std::vector<std::size_t> descriptorsOfThreads() {
  std::vector<std::size_t> counts;
  for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
    std::size_t count = 0;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(thread.path() / "fd", error))
      if (std::stoi(entry.path().filename()) > STDERR_FILENO) ++count;
    counts.push_back(count);
  }
  return counts;
}

TEST(SettingsKeeper, SharesNoDescriptorThatADiskCouldKeepOpen) {
#if defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the thread sanitizer knows one table of descriptors only";
#endif
  const SettingsFolder folder;
  const Descriptor lock(open(folder.path("").c_str(), O_RDONLY | O_CLOEXEC));
  SettingsKeeper keeper(folder.file(), SettingsFolder::patient());
  keeper.value("a");
  const std::vector<std::size_t> counts = descriptorsOfThreads();
  EXPECT_EQ(std::ranges::count(counts, 0U), 1) << counts.size();
}

}  // namespace
}  // namespace platform
