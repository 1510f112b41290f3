// Tests a settings file that is damaged, cannot be reached, or is no file at all.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Tests/Platform/ChildProcess.h"
#include "Tests/Platform/Settings/SettingsFolder.h"

namespace platform {
namespace {

using Texts = std::vector<std::string>;

std::string damaged(const SettingsFolder& folder) {
  return "error: settings file " + folder.file() + " is damaged (line ";
}

TEST(TomlDefaultsTrouble, ReadsWhatCanBeReadOfADamagedFile) {
  const SettingsFolder folder;
  const std::string text =
      "# mine\ngraceSeconds = 30\nsustainSeconds = 99999999999999999999\nverbose = true\n";
  folder.write(text);
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  defaults.registerDefaults({{"sustainSeconds", std::int64_t{10}}});
  EXPECT_EQ(defaults.integer("graceSeconds"), 30);
  EXPECT_EQ(defaults.integer("sustainSeconds"), 10);
  EXPECT_TRUE(defaults.boolean("verbose"));
  EXPECT_EQ(folder.names(), Texts{"settings.toml"});
  EXPECT_EQ(folder.read(), text);
}

TEST(TomlDefaultsTrouble, SaysOnceInWhichLineAFileIsDamaged) {
  const SettingsFolder folder;
  folder.write("graceSeconds = 30\nverbose = maybe\n");
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  EXPECT_EQ(defaults.integer("graceSeconds"), 30);
  EXPECT_EQ(defaults.integer("graceSeconds"), 30);
  folder.write("graceSeconds = 300\nverbose = maybe\n");
  EXPECT_EQ(defaults.integer("graceSeconds"), 300);
  ASSERT_EQ(folder.logged().size(), 1U);
  EXPECT_TRUE(folder.logged()[0].starts_with(damaged(folder) + "2: ")) << folder.logged()[0];
  EXPECT_TRUE(folder.logged()[0].ends_with("); what cannot be read of it has its default"))
      << folder.logged()[0];
}

TEST(TomlDefaultsTrouble, SavesIntoADamagedFileAndLeavesTheDamage) {
  const SettingsFolder folder;
  folder.write("[[[\n# mine\n");
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  defaults.setInteger("a", 1);
  defaults.finishWriting();
  EXPECT_EQ(folder.read(), "a = 1\n[[[\n# mine\n");
  EXPECT_EQ(defaults.integer("a"), 1);
  EXPECT_EQ(folder.names(), Texts{"settings.toml"});
  EXPECT_EQ(folder.logged().size(), 1U);
}

TEST(TomlDefaultsTrouble, TurnsTheDamagedLineOfAChangedKeyIntoAComment) {
  const SettingsFolder folder;
  folder.write("a = 1\ngrace = 99999999999999999999 # long\nb = 2\n");
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  defaults.setInteger("grace", 60);
  defaults.finishWriting();
  EXPECT_EQ(folder.read(), "a = 1\n# grace = 99999999999999999999 # long\nb = 2\ngrace = 60\n");
}

/// Times of a store that waits an hour for the rest of a file that is not whole.
SettingsKeeper::Timing trusting() {
  SettingsKeeper::Timing timing = SettingsFolder::patient();
  timing.settlingTime = std::chrono::hours(1);
  return timing;
}

TEST(TomlDefaultsTrouble, WaitsForAnEditorThatHasWrittenOnlyHalf) {
  const SettingsFolder folder;
  TomlDefaults defaults(folder.file(), trusting());
  folder.write("graceSeconds = 30\n");
  EXPECT_EQ(defaults.integer("graceSeconds"), 30);
  for (const char* halfWay : {"graceSeconds = ", "", "\n"}) {
    folder.writeJustNow(halfWay);
    EXPECT_EQ(defaults.integer("graceSeconds"), 30) << halfWay;
  }
  std::filesystem::remove(folder.file());
  EXPECT_EQ(defaults.integer("graceSeconds"), 30);
  EXPECT_EQ(folder.names(), Texts{});
  folder.writeJustNow("graceSeconds = 40\n");
  EXPECT_EQ(defaults.integer("graceSeconds"), 40);
  EXPECT_EQ(folder.logged(), Texts{});
}

TEST(TomlDefaultsTrouble, DoesNotSaveIntoAFileThatIsHalfWritten) {
  const SettingsFolder folder;
  folder.write("graceSeconds = 30\nverbose = true\n");
  SettingsKeeper::Timing timing = trusting();
  timing.finishTimeout = std::chrono::milliseconds(100);
  timing.retryPause = std::chrono::hours(1);
  TomlDefaults defaults(folder.file(), timing);
  EXPECT_EQ(defaults.integer("graceSeconds"), 30);
  folder.writeJustNow("");
  defaults.setInteger("a", 1);
  defaults.finishWriting();
  EXPECT_EQ(folder.read(), "");
  EXPECT_EQ(defaults.integer("a"), 1);
  EXPECT_TRUE(defaults.boolean("verbose"));
  EXPECT_EQ(folder.logged(), Texts{"error: settings could not be saved to " + folder.file() +
                                   " in time; what was changed last is lost"});
}

TEST(TomlDefaultsTrouble, SavesWhenTheEditorHasWrittenTheRest) {
  const SettingsFolder folder;
  folder.write("graceSeconds = 30\nverbose = true\n");
  TomlDefaults defaults(folder.file(), trusting());
  EXPECT_EQ(defaults.integer("graceSeconds"), 30);
  folder.writeJustNow("grace");
  defaults.setInteger("a", 1);
  folder.writeJustNow("graceSeconds = 40\nverbose = true\n");
  defaults.finishWriting();
  EXPECT_EQ(folder.read(), "graceSeconds = 40\nverbose = true\na = 1\n");
}

TEST(TomlDefaultsTrouble, BelievesAFileThatStaysDamaged) {
  const SettingsFolder folder;
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  folder.write("graceSeconds = 30\na = 1\n");
  EXPECT_EQ(defaults.integer("graceSeconds"), 30);
  folder.write("graceSeconds = \na = 1\n");
  EXPECT_EQ(defaults.integer("graceSeconds"), 0);
  EXPECT_EQ(defaults.integer("a"), 1);
  EXPECT_EQ(folder.names(), Texts{"settings.toml"});
}

void expectHeldInMemory(const SettingsFolder& folder, const std::string& reason) {
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  defaults.registerDefaults({{"a", std::int64_t{7}}});
  EXPECT_EQ(defaults.integer("a"), 7);
  EXPECT_EQ(defaults.integer("a"), 7);
  EXPECT_EQ(folder.logged(),
            Texts{"error: settings file " + folder.file() + " cannot be read: " + reason});
  defaults.setInteger("a", 1);
  defaults.setInteger("b", 2);
  defaults.finishWriting();
  EXPECT_EQ(defaults.integer("a"), 1);
  EXPECT_EQ(defaults.integer("b"), 2);
  EXPECT_EQ(defaults.savingProblem(), reason);
  EXPECT_EQ(folder.logged().size(), 2U);
  EXPECT_EQ(folder.logged().back(), "error: settings cannot be saved to " + folder.file() + ": " +
                                        reason + "; changes hold until the program ends");
}

TEST(TomlDefaultsTrouble, DoesNotWaitForAPipe) {
  const SettingsFolder folder;
  ASSERT_EQ(mkfifo(folder.file().c_str(), 0600), 0);
  expectHeldInMemory(folder, "it is not a regular file");
}

TEST(TomlDefaultsTrouble, LeavesAFolderInItsPlaceAlone) {
  const SettingsFolder folder;
  mkdir(folder.file().c_str(), 0700);
  expectHeldInMemory(folder, "it is a folder");
}

TEST(TomlDefaultsTrouble, DoesNotReadAGigabyte) {
  const SettingsFolder folder;
  folder.write("");
  ASSERT_EQ(truncate(folder.file().c_str(), 1 << 30), 0);
  expectHeldInMemory(folder, "it is too large");
  EXPECT_EQ(std::filesystem::file_size(folder.file()), 1U << 30);
}

TEST(TomlDefaultsTrouble, SavesPendingValuesAsSoonAsItCan) {
  const SettingsFolder folder;
  mkdir(folder.file().c_str(), 0700);
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  defaults.setInteger("a", 1);
  defaults.finishWriting();
  rmdir(folder.file().c_str());
  EXPECT_EQ(defaults.integer("a"), 1);
  defaults.setInteger("b", 2);
  defaults.finishWriting();
  EXPECT_EQ(folder.read(), "a = 1\nb = 2\n");
}

TEST(TomlDefaultsTrouble, LetsALaterEditByHandOverruleAValueThatCouldNotBeSaved) {
  const SettingsFolder folder;
  folder.write("a = 1\nb = 1\n");
  SettingsKeeper::Timing timing = SettingsFolder::patient();
  timing.retryPause = std::chrono::hours(1);
  TomlDefaults defaults(folder.file(), timing);
  EXPECT_EQ(defaults.integer("a"), 1);
  std::filesystem::remove(folder.file());
  mkdir(folder.file().c_str(), 0700);
  defaults.setInteger("a", 2);
  defaults.setInteger("b", 2);
  defaults.finishWriting();
  EXPECT_EQ(defaults.integer("a"), 2);
  rmdir(folder.file().c_str());
  folder.write("a = 3\nb = 1\n");
  EXPECT_EQ(defaults.integer("a"), 3);
  EXPECT_EQ(defaults.integer("b"), 2);
  defaults.setInteger("c", 4);
  defaults.finishWriting();
  EXPECT_EQ(folder.read(), "a = 3\nb = 2\nc = 4\n");
}

TEST(TomlDefaultsTrouble, ComplainsAgainWhenTheTroubleComesBack) {
  const SettingsFolder folder;
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  for (int time = 0; time < 2; ++time) {
    mkdir(folder.file().c_str(), 0700);
    EXPECT_EQ(defaults.integer("a"), 0);
    rmdir(folder.file().c_str());
    EXPECT_EQ(defaults.integer("a"), 0);
  }
  EXPECT_EQ(folder.logged().size(), 2U);
}

TEST(TomlDefaultsTrouble, KeepsTheValuesOfAFileThatCanNoLongerBeRead) {
  const SettingsFolder folder;
  folder.write("a = 5\n");
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  EXPECT_EQ(defaults.integer("a"), 5);
  std::filesystem::remove(folder.file());
  mkdir(folder.file().c_str(), 0700);
  EXPECT_EQ(defaults.integer("a"), 5);
}

TEST(TomlDefaultsTrouble, LivesWithoutAHome) {
  const SettingsFolder folder;
  TomlDefaults defaults(std::filesystem::path(), SettingsFolder::patient());
  defaults.setInteger("a", 1);
  defaults.finishWriting();
  EXPECT_EQ(defaults.integer("a"), 1);
  EXPECT_EQ(folder.logged(),
            Texts{"error: settings cannot be saved to : No such file or directory; changes hold "
                  "until the program ends"});
}

/// Uses a store in a child that must obey the file's permissions. Returns what the store read
/// before and after a change, and the log.
std::string triedAsOrdinaryUser(const SettingsFolder& folder) {
  return asOrdinaryUser([&folder] {
    TomlDefaults defaults(folder.file(), SettingsFolder::patient());
    std::string told = std::to_string(defaults.integer("a"));
    defaults.setInteger("a", 2);
    defaults.finishWriting();
    defaults.setInteger("a", 3);
    defaults.finishWriting();
    told += " " + std::to_string(defaults.integer("a"));
    for (const std::string& line : folder.logged())
      told += "\n" + line;
    return told;
  });
}

TEST(TomlDefaultsTrouble, HoldsChangesInAReadOnlyFolder) {
  const SettingsFolder folder;
  folder.write("a = 1\n");
  chmod(folder.file().c_str(), 0644);
  chmod(folder.path("").c_str(), 0555);
  EXPECT_EQ(triedAsOrdinaryUser(folder), "1 3\nerror: settings cannot be saved to " +
                                             folder.file() +
                                             ": Permission denied; changes hold until the program "
                                             "ends");
  chmod(folder.path("").c_str(), 0700);
  EXPECT_EQ(folder.read(), "a = 1\n");
  EXPECT_EQ(folder.names(), Texts{"settings.toml"});
}

TEST(TomlDefaultsTrouble, NeitherReadsNorReplacesAFileWithoutPermission) {
  const SettingsFolder folder;
  folder.write("a = 1\n");
  chmod(folder.file().c_str(), 0);
  chmod(folder.path("").c_str(), 0777);
  EXPECT_EQ(triedAsOrdinaryUser(folder),
            "0 3\nerror: settings file " + folder.file() +
                " cannot be read: Permission denied\nerror: settings cannot be saved to " +
                folder.file() + ": Permission denied; changes hold until the program ends");
  chmod(folder.file().c_str(), 0600);
  EXPECT_EQ(folder.read(), "a = 1\n");
}

}  // namespace
}  // namespace platform
