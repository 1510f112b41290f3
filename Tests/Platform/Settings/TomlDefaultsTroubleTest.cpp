// A settings file that is damaged, out of reach, or no file at all.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Tests/Platform/ChildProcess.h"
#include "Tests/Platform/Settings/SettingsFolder.h"

namespace platform {
namespace {

using Texts = std::vector<std::string>;

TEST(TomlDefaultsTrouble, SetsADamagedFileAsideAndHoldsTheDefaults) {
  const SettingsFolder folder;
  folder.write("graceSeconds = 30\nverbose = maybe\n");
  TomlDefaults defaults(folder.file());
  defaults.registerDefaults({{"graceSeconds", std::int64_t{120}}});
  EXPECT_EQ(defaults.integer("graceSeconds"), 120);
  EXPECT_EQ(defaults.integer("graceSeconds"), 120);
  EXPECT_EQ(folder.names(), Texts{"settings.toml.damaged"});
  EXPECT_EQ(SettingsFolder::read(folder.path("settings.toml.damaged")),
            "graceSeconds = 30\nverbose = maybe\n");
  ASSERT_EQ(folder.logged().size(), 1U);
  EXPECT_TRUE(folder.logged()[0].starts_with("error: settings file " + folder.file() +
                                             " is damaged (line 2: "))
      << folder.logged()[0];
  EXPECT_TRUE(
      folder.logged()[0].ends_with("); set aside as " + folder.path("settings.toml.damaged")))
      << folder.logged()[0];
}

TEST(TomlDefaultsTrouble, StartsAFreshFileAfterADamagedOne) {
  const SettingsFolder folder;
  folder.write("[[[");
  TomlDefaults defaults(folder.file());
  defaults.setInteger("a", 1);
  EXPECT_EQ(folder.read(), "a = 1\n");
  EXPECT_EQ(SettingsFolder::read(folder.path("settings.toml.damaged")), "[[[");
  EXPECT_EQ(folder.logged().size(), 1U);
}

TEST(TomlDefaultsTrouble, WaitsForAnEditorThatIsHalfWay) {
  const SettingsFolder folder;
  TomlDefaults defaults(folder.file());
  folder.write("graceSeconds = 30\n");
  EXPECT_EQ(defaults.integer("graceSeconds"), 30);
  folder.writeJustNow("graceSeconds = ");
  EXPECT_EQ(defaults.integer("graceSeconds"), 30);
  EXPECT_EQ(folder.names(), Texts{"settings.toml"});
  folder.writeJustNow("graceSeconds = 40\n");
  EXPECT_EQ(defaults.integer("graceSeconds"), 40);
  EXPECT_EQ(folder.logged(), Texts{});
}

TEST(TomlDefaultsTrouble, SetsAsideWhatStaysDamaged) {
  const SettingsFolder folder;
  TomlDefaults defaults(folder.file());
  folder.write("graceSeconds = 30\n");
  EXPECT_EQ(defaults.integer("graceSeconds"), 30);
  folder.write("graceSeconds = ");
  EXPECT_EQ(defaults.integer("graceSeconds"), 0);
  EXPECT_EQ(folder.names(), Texts{"settings.toml.damaged"});
}

TEST(TomlDefaultsTrouble, SetsAsideTheRealFileBehindALink) {
  const SettingsFolder folder;
  mkdir(folder.path("real").c_str(), 0700);
  std::filesystem::create_symlink("real/s.toml", folder.file());
  folder.writeJustNow("[");
  TomlDefaults defaults(folder.file());
  defaults.setInteger("a", 1);
  EXPECT_EQ(SettingsFolder::read(folder.path("real/s.toml")), "a = 1\n");
  EXPECT_EQ(SettingsFolder::read(folder.path("real/s.toml.damaged")), "[");
}

void expectHeldInMemory(const SettingsFolder& folder, const std::string& reason) {
  TomlDefaults defaults(folder.file());
  defaults.registerDefaults({{"a", std::int64_t{7}}});
  EXPECT_EQ(defaults.integer("a"), 7);
  EXPECT_EQ(defaults.integer("a"), 7);
  EXPECT_EQ(folder.logged(),
            Texts{"error: settings file " + folder.file() + " cannot be read: " + reason});
  defaults.setInteger("a", 1);
  defaults.setInteger("b", 2);
  EXPECT_EQ(defaults.integer("a"), 1);
  EXPECT_EQ(defaults.integer("b"), 2);
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

TEST(TomlDefaultsTrouble, SavesWhatWasHeldOnceItCan) {
  const SettingsFolder folder;
  mkdir(folder.file().c_str(), 0700);
  TomlDefaults defaults(folder.file());
  defaults.setInteger("a", 1);
  rmdir(folder.file().c_str());
  EXPECT_EQ(defaults.integer("a"), 1);
  defaults.setInteger("b", 2);
  EXPECT_EQ(folder.read(), "a = 1\nb = 2\n");
}

TEST(TomlDefaultsTrouble, SaysItAgainWhenTroubleComesBack) {
  const SettingsFolder folder;
  TomlDefaults defaults(folder.file());
  for (int time = 0; time < 2; ++time) {
    mkdir(folder.file().c_str(), 0700);
    EXPECT_EQ(defaults.integer("a"), 0);
    rmdir(folder.file().c_str());
    EXPECT_EQ(defaults.integer("a"), 0);
  }
  EXPECT_EQ(folder.logged().size(), 2U);
}

TEST(TomlDefaultsTrouble, KeepsTheValuesOfAFileThatGoesOutOfReach) {
  const SettingsFolder folder;
  folder.write("a = 5\n");
  TomlDefaults defaults(folder.file());
  EXPECT_EQ(defaults.integer("a"), 5);
  std::filesystem::remove(folder.file());
  mkdir(folder.file().c_str(), 0700);
  EXPECT_EQ(defaults.integer("a"), 5);
}

TEST(TomlDefaultsTrouble, LivesWithoutAHome) {
  const SettingsFolder folder;
  TomlDefaults defaults{std::filesystem::path()};
  defaults.setInteger("a", 1);
  EXPECT_EQ(defaults.integer("a"), 1);
  EXPECT_EQ(folder.logged(),
            Texts{"error: settings cannot be saved to : No such file or directory; changes hold "
                  "until the program ends"});
}

/// Uses a store in a child that may not do what its file's rights forbid; returns what it read
/// before and after a change, and its log.
std::string triedAsOrdinaryUser(const SettingsFolder& folder) {
  return asOrdinaryUser([&folder] {
    TomlDefaults defaults(folder.file());
    std::string told = std::to_string(defaults.integer("a"));
    defaults.setInteger("a", 2);
    defaults.setInteger("a", 3);
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

TEST(TomlDefaultsTrouble, NeitherReadsNorReplacesAFileWithoutTheRight) {
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

TEST(TomlDefaultsTrouble, LivesWithADamagedFileThatCannotBeSetAside) {
  const SettingsFolder folder;
  folder.write("a = \n");
  chmod(folder.file().c_str(), 0644);
  chmod(folder.path("").c_str(), 0555);
  const std::string told = triedAsOrdinaryUser(folder);
  chmod(folder.path("").c_str(), 0700);
  EXPECT_TRUE(told.starts_with("0 3\nerror: settings file " + folder.file() + " is damaged (line "))
      << told;
  EXPECT_NE(told.find(") and cannot be set aside: Permission denied\n"), std::string::npos) << told;
  EXPECT_EQ(folder.read(), "a = \n");
}

}  // namespace
}  // namespace platform
