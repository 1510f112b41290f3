#include "Platform/Linux/Settings/TomlDefaults.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include "Platform/Linux/Settings/SettingsFile.h"
#include "Tests/Platform/Settings/SettingsFolder.h"
#include "Tests/Platform/Support/ScopedEnvironment.h"

namespace platform {
namespace {

using Texts = std::vector<std::string>;

TEST(TomlDefaults, LiesInTheConfigurationFolder) {
  const testing::ScopedEnvironment home("HOME", "/home/user");
  {
    const testing::ScopedEnvironment config("XDG_CONFIG_HOME", "/config");
    EXPECT_EQ(TomlDefaults::defaultPath(), "/config/staylit/settings.toml");
  }
  for (const char* unusable : {"", "relative/config", "~/config"}) {
    const testing::ScopedEnvironment config("XDG_CONFIG_HOME", unusable);
    EXPECT_EQ(TomlDefaults::defaultPath(), "/home/user/.config/staylit/settings.toml") << unusable;
  }
}

TEST(TomlDefaults, WritesNothingByItself) {
  const SettingsFolder folder;
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  defaults.registerDefaults({{"graceSeconds", std::int64_t{120}}});
  EXPECT_EQ(defaults.integer("graceSeconds"), 120);
  EXPECT_EQ(folder.names(), Texts{});
}

TEST(TomlDefaults, WritesOnlyTheKeyThatIsSet) {
  const SettingsFolder folder;
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  defaults.registerDefaults({{"graceSeconds", std::int64_t{120}}, {"verbose", false}});
  defaults.setBoolean("verbose", true);
  defaults.finishWriting();
  EXPECT_EQ(folder.read(), "verbose = true\n");
  EXPECT_EQ(folder.names(), Texts{"settings.toml"});
}

TEST(TomlDefaults, KeepsCommentsUnknownKeysAndTables) {
  const SettingsFolder folder;
  folder.write(
      "# Quiet machine\ngraceSeconds = 120 # two minutes\nfuture = {a = 1}\n\n[plugin]\nx = 1\n");
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  defaults.setInteger("graceSeconds", 60);
  defaults.setStringList("ignoredApps", {"a"});
  defaults.finishWriting();
  EXPECT_EQ(folder.read(),
            "# Quiet machine\ngraceSeconds = 60 # two minutes\nfuture = {a = 1}\n"
            "ignoredApps = [\"a\"]\n\n[plugin]\nx = 1\n");
}

TEST(TomlDefaults, SeesAnEditByHandAtTheNextRead) {
  const SettingsFolder folder;
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  defaults.registerDefaults({{"graceSeconds", std::int64_t{120}}});
  folder.write("graceSeconds = 30\n");
  EXPECT_EQ(defaults.integer("graceSeconds"), 30);
  folder.write("graceSeconds = 300\n");
  EXPECT_EQ(defaults.integer("graceSeconds"), 300);
  std::filesystem::remove(folder.file());
  EXPECT_EQ(defaults.integer("graceSeconds"), 120);
}

TEST(TomlDefaults, SeesTwoEditsOfTheSameLengthAtTheSameMoment) {
  const SettingsFolder folder;
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  folder.writeJustNow("a = 1\n");
  struct stat status {};
  stat(folder.file().c_str(), &status);
  EXPECT_EQ(defaults.integer("a"), 1);
  folder.writeJustNow("a = 2\n");
  const timespec sameTime[2] = {status.st_atim, status.st_mtim};
  utimensat(AT_FDCWD, folder.file().c_str(), sameTime, 0);
  EXPECT_EQ(defaults.integer("a"), 2);
}

TEST(TomlDefaults, KeepsAnEditByHandWhenItWritesAnotherKey) {
  const SettingsFolder folder;
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  folder.write("a = 1\n");
  EXPECT_EQ(defaults.integer("a"), 1);
  folder.write("a = 2 # by hand\n");
  defaults.setInteger("b", 3);
  defaults.finishWriting();
  EXPECT_EQ(folder.read(), "a = 2 # by hand\nb = 3\n");
}

TEST(TomlDefaults, LeavesTheFileAloneWhenTheValueIsThereAlready) {
  const SettingsFolder folder;
  folder.write("ignoredApps = [ 'a', 'b' ] # mine\n");
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  const FileStamp before = SettingsFile(folder.file()).stamp();
  defaults.setStringList("ignoredApps", {"a", "b"});
  defaults.finishWriting();
  EXPECT_EQ(SettingsFile(folder.file()).stamp(), before);
}

TEST(TomlDefaults, ConvertsWhatAPersonWroteInAnotherType) {
  const SettingsFolder folder;
  folder.write(
      "graceSeconds = '90 s'\ncpuThresholdPercent = 12\nverbose = 'yes'\nkeepScreenOn = 1\n"
      "ignoredApps = ['a', 1]\nbatteryThreshold = 1979-05-27\n");
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  defaults.registerDefaults({{"batteryThreshold", std::int64_t{20}}});
  EXPECT_EQ(defaults.integer("graceSeconds"), 90);
  EXPECT_EQ(defaults.real("cpuThresholdPercent"), 12.0);
  EXPECT_TRUE(defaults.boolean("verbose"));
  EXPECT_TRUE(defaults.boolean("keepScreenOn"));
  EXPECT_EQ(defaults.stringList("ignoredApps"), std::nullopt);
  EXPECT_EQ(defaults.integer("batteryThreshold"), 0);
}

TEST(TomlDefaults, SharesTheFileBetweenTwoStores) {
  const SettingsFolder folder;
  TomlDefaults one(folder.file(), SettingsFolder::patient());
  TomlDefaults other(folder.file(), SettingsFolder::patient());
  one.setInteger("a", 1);
  one.finishWriting();
  EXPECT_EQ(other.integer("a"), 1);
  other.setInteger("a", 2);
  other.finishWriting();
  EXPECT_EQ(one.integer("a"), 2);
}

TEST(TomlDefaults, FollowsALinkToTheRealFile) {
  const SettingsFolder folder;
  mkdir(folder.path("dotfiles").c_str(), 0700);
  std::filesystem::create_symlink("dotfiles/staylit.toml", folder.file());
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  defaults.setInteger("a", 1);
  defaults.finishWriting();
  EXPECT_EQ(SettingsFolder::read(folder.path("dotfiles/staylit.toml")), "a = 1\n");
  EXPECT_TRUE(std::filesystem::is_symlink(folder.file()));
  EXPECT_EQ(defaults.integer("a"), 1);
}

/// The remarks on the file after a look at it, with no setting having limits.
Texts remarksOn(TomlDefaults& defaults) {
  static_cast<void>(defaults.integer("graceSeconds"));
  return defaults.takeRemarks([](std::string_view, const tidewell::PropertyValue&) {
    return tidewell::SettingMeaning{"0", "", ""};
  });
}

TEST(TomlDefaults, RemarksOnceOnEachLineThatDoesNotCountAsItStands) {
  const SettingsFolder folder;
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  defaults.registerDefaults({{"graceSeconds", std::int64_t{120}}});
  EXPECT_EQ(remarksOn(defaults), Texts{});
  const std::string grace = "\"graceSeconds\" wants a number; 0 counts";
  const std::string key = "nobody knows the key \"grace\", and it does not count";
  folder.write("graceSeconds = \"long\"\ngrace = 1\n");
  EXPECT_EQ(remarksOn(defaults), (Texts{"Settings, line 1: " + grace, "Settings, line 2: " + key}));
  EXPECT_EQ(remarksOn(defaults), Texts{});
  folder.write("# Another line above changes the numbers.\ngraceSeconds = \"long\"\n");
  EXPECT_EQ(remarksOn(defaults), Texts{});
  folder.write("graceSeconds = \"long\"\ngrace = 1\n");
  EXPECT_EQ(remarksOn(defaults), Texts{"Settings, line 2: " + key}) << "it was mended meanwhile";
}

TEST(TomlDefaults, RemarksNothingOnWhatItWritesItself) {
  const SettingsFolder folder;
  folder.write("grace = 1\n");
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  EXPECT_EQ(remarksOn(defaults).size(), 1U);
  defaults.setInteger("graceSeconds", 60);
  defaults.finishWriting();
  EXPECT_EQ(remarksOn(defaults), Texts{});
}

}  // namespace
}  // namespace platform
