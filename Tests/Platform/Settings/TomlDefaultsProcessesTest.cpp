// Tests several processes that use one settings file at once.

#include <gtest/gtest.h>

#include "Tests/Platform/ChildProcess.h"
#include "Tests/Platform/Settings/SettingsFolder.h"

namespace platform {
namespace {

using Texts = std::vector<std::string>;

constexpr int kRounds = 40;

void countUp(const std::string& file, const std::string& key) {
  TomlDefaults defaults(file, SettingsFolder::patient());
  for (int round = 1; round <= kRounds; ++round) {
    defaults.setInteger(key, round);
    defaults.setStringList(key + std::to_string(round), {key});
    defaults.finishWriting();
  }
}

TEST(TomlDefaultsProcesses, LoseNothingWhenTheyWriteDifferentKeysAtOnce) {
  const SettingsFolder folder;
  folder.write("# shared\n[table]\nx = 1 # kept\n");
  {
    ChildProcess one([&folder] { countUp(folder.file(), "one"); });
    ChildProcess other([&folder] { countUp(folder.file(), "other"); });
    EXPECT_TRUE(one.wait());
    EXPECT_TRUE(other.wait());
  }
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  for (const std::string key : {"one", "other"}) {
    EXPECT_EQ(defaults.integer(key), 40);
    for (int round = 1; round <= kRounds; ++round)
      EXPECT_EQ(defaults.stringList(key + std::to_string(round)), Texts{key}) << round;
  }
  EXPECT_TRUE(folder.read().starts_with("# shared\n"));
  EXPECT_TRUE(folder.read().ends_with("[table]\nx = 1 # kept\n"));
  EXPECT_EQ(folder.names(), Texts{"settings.toml"});
}

TEST(TomlDefaultsProcesses, NeverReadAHalfWrittenFile) {
  const SettingsFolder folder;
  folder.write("sound = true\n");
  ChildProcess writer([&folder] { countUp(folder.file(), "key"); });
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  std::int64_t last = 0;
  while (last < kRounds) {
    ASSERT_TRUE(defaults.boolean("sound"));
    const std::int64_t now = defaults.integer("key");
    ASSERT_GE(now, last);
    last = now;
  }
  EXPECT_TRUE(writer.wait());
  EXPECT_EQ(folder.logged(), Texts{});
}

TEST(TomlDefaultsProcesses, ShareADamagedFile) {
  const SettingsFolder folder;
  folder.write("damaged\n");
  {
    const auto set = [&folder](const char* key, int value) {
      TomlDefaults defaults(folder.file(), SettingsFolder::patient());
      defaults.setInteger(key, value);
    };
    ChildProcess one([&set] { set("one", 1); });
    ChildProcess other([&set] { set("other", 2); });
    EXPECT_TRUE(one.wait());
    EXPECT_TRUE(other.wait());
  }
  TomlDefaults defaults(folder.file(), SettingsFolder::patient());
  EXPECT_EQ(defaults.integer("one"), 1);
  EXPECT_EQ(defaults.integer("other"), 2);
  EXPECT_EQ(folder.names(), Texts{"settings.toml"});
  EXPECT_NE(folder.read().find("damaged\n"), std::string::npos);
}

}  // namespace
}  // namespace platform
