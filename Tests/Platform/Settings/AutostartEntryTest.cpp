#include "Platform/Linux/Settings/AutostartEntry.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Linux/Applications/DesktopEntry.h"
#include "Platform/Linux/Applications/ExecWords.h"
#include "Platform/Linux/Files/OwnProgram.h"
#include "Platform/Linux/Settings/AutostartText.h"
#include "Tests/Platform/Support/ChildProgram.h"
#include "Tests/Platform/Support/ScopedEnvironment.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

namespace fs = std::filesystem;
using testing::ScopedEnvironment;
using Words = std::vector<std::string>;

std::string textOf(const fs::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

class AutostartEntryTest : public ::testing::Test {
 protected:
  /// Makes a program at `name` in the folder.
  fs::path program(const std::string& name) const {
    folder.write(name, "#!/bin/sh\n");
    fs::permissions(folder.path() / name, fs::perms::owner_all);
    return folder.path() / name;
  }

  [[nodiscard]] fs::path file() const {
    return folder.path() / "config/autostart/com.staylit.app.desktop";
  }

  /// The program and its arguments that a desktop reads in the file.
  [[nodiscard]] Words command() const {
    const auto entry = DesktopEntry::parse(textOf(file()), {});
    return entry ? execWords(entry->exec) : Words{};
  }

  testing::TemporaryFolder folder;
  ScopedEnvironment home{"HOME", (folder.path() / "home").string()};
  ScopedEnvironment configuration{"XDG_CONFIG_HOME", (folder.path() / "config").string()};
  ScopedEnvironment path{"PATH", (folder.path() / "bin").string()};
};

TEST_F(AutostartEntryTest, IsADesktopFileThatStartsTheProgram) {
  EXPECT_EQ(AutostartEntry("/opt/staylit/bin/staylit").registerItem(), std::nullopt);
  EXPECT_EQ(textOf(file()),
            "[Desktop Entry]\n"
            "Type=Application\n"
            "Name=Staylit\n"
            "Comment=Keeps the computer awake while it works\n"
            "Exec=\"/opt/staylit/bin/staylit\" --background\n"
            "TryExec=/opt/staylit/bin/staylit\n"
            "Icon=com.staylit.app\n"
            "Terminal=false\n"
            "StartupNotify=false\n");
}

TEST_F(AutostartEntryTest, LiesInTheHomeFolderUnlessTheUserHasMovedIt) {
  const ScopedEnvironment unset("XDG_CONFIG_HOME", std::nullopt);
  EXPECT_EQ(AutostartEntry("/a").registerItem(), std::nullopt);
  EXPECT_TRUE(fs::exists(folder.path() / "home/.config/autostart/com.staylit.app.desktop"));
}

TEST_F(AutostartEntryTest, NamesOnlyTheFileOfAProgramThatEverySessionFinds) {
  EXPECT_EQ(AutostartEntry(program("bin/staylit")).registerItem(), std::nullopt);
  EXPECT_EQ(command(), (Words{"staylit", "--background"}));
}

TEST_F(AutostartEntryTest, FollowsALinkToTheProgram) {
  const fs::path real = program("opt/staylit-1.0");
  fs::create_directory(folder.path() / "bin");
  fs::create_symlink(real, folder.path() / "bin/staylit");
  EXPECT_EQ(AutostartEntry(real).registerItem(), std::nullopt);
  EXPECT_EQ(command(), (Words{"staylit", "--background"}));
}

TEST_F(AutostartEntryTest, NamesThePathOfAProgramThatAnotherHides) {
  program("bin/staylit");
  const fs::path built = program("build/staylit");
  EXPECT_EQ(AutostartEntry(built).registerItem(), std::nullopt);
  EXPECT_EQ(command(), (Words{built.string(), "--background"}));
}

TEST_F(AutostartEntryTest, NamesThePathOfAProgramInTheUsersOwnFolders) {
  const fs::path own = program("home/.local/bin/staylit");
  const ScopedEnvironment shell("PATH", own.parent_path().string());
  EXPECT_EQ(AutostartEntry(own).registerItem(), std::nullopt);
  EXPECT_EQ(command(), (Words{own.string(), "--background"}));
}

TEST_F(AutostartEntryTest, LeavesARightFileAlone) {
  EXPECT_EQ(AutostartEntry("/a").registerItem(), std::nullopt);
  struct stat before {};
  ASSERT_EQ(::stat(file().c_str(), &before), 0);
  EXPECT_EQ(AutostartEntry("/a").registerItem(), std::nullopt);
  struct stat after {};
  ASSERT_EQ(::stat(file().c_str(), &after), 0);
  EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST_F(AutostartEntryTest, ReplacesAnyOtherFile) {
  folder.write("config/autostart/com.staylit.app.desktop", "[Desktop Entry]\nHidden=true\n");
  EXPECT_EQ(AutostartEntry("/a").registerItem(), std::nullopt);
  EXPECT_EQ(command(), (Words{"/a", "--background"}));
  EXPECT_EQ(textOf(file()).find("Hidden"), std::string::npos);
}

TEST_F(AutostartEntryTest, LeavesNothingBehindAfterItsRemoval) {
  AutostartEntry entry("/a");
  EXPECT_EQ(entry.registerItem(), std::nullopt);
  EXPECT_EQ(entry.unregisterItem(), std::nullopt);
  EXPECT_TRUE(fs::is_empty(file().parent_path()));
}

TEST_F(AutostartEntryTest, NeedsNoRemovalWhenItDoesNotExist) {
  EXPECT_EQ(AutostartEntry("/a").unregisterItem(), std::nullopt);
}

TEST_F(AutostartEntryTest, SaysWhyItsFolderCannotBeMade) {
  folder.write("config", "a file in its place");
  EXPECT_EQ(AutostartEntry("/a").registerItem(),
            "cannot make " + file().parent_path().string() + ": Not a directory");
}

TEST_F(AutostartEntryTest, SaysWhyItCannotBeWrittenOrRemoved) {
  fs::create_directories(file() / "a folder in its place");
  EXPECT_EQ(AutostartEntry("/a").registerItem(),
            "cannot write " + file().string() + ": Is a directory");
  EXPECT_EQ(AutostartEntry("/a").unregisterItem(),
            "cannot remove " + file().string() + ": Directory not empty");
  EXPECT_EQ(std::distance(fs::directory_iterator(file().parent_path()), {}), 1);
}

TEST_F(AutostartEntryTest, SaysThatAFileSystemIsReadOnly) {
  const ScopedEnvironment readOnly("XDG_CONFIG_HOME", "/proc/sys");
  const auto failure = AutostartEntry("/a").registerItem();
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->substr(0, 31), "cannot make /proc/sys/autostart");
}

TEST_F(AutostartEntryTest, CannotStartAProgramOfUnknownPath) {
  EXPECT_EQ(AutostartEntry({}).registerItem(), "the program's own path cannot be told");
  EXPECT_FALSE(fs::exists(file()));
}

TEST_F(AutostartEntryTest, QuotesEveryCharacterThatHasAMeaningForDesktops) {
  EXPECT_EQ(quotedWord("/a b/staylit"), R"("/a b/staylit")");
  EXPECT_EQ(quotedWord(R"(/a"b)"), R"("/a\\"b")");
  EXPECT_EQ(quotedWord("/a$b`c"), R"("/a\\$b\\`c")");
  EXPECT_EQ(quotedWord(R"(/a\b)"), R"("/a\\\\b")");
  EXPECT_EQ(quotedWord("/100%U"), R"("/100%%U")");
  EXPECT_EQ(quotedWord("/a\nb\tc\rd"), R"("/a\nb\tc\rd")");
}

/// Starts the entry with the library that reads such files on most desktops. The library takes no
/// program with a percent sign in its path.
TEST_F(AutostartEntryTest, IsStartedByARealDesktopWhateverItsPath) {
  const ScopedEnvironment usual("PATH", "/usr/bin:/bin");
  if (!testing::isInstalled("gio")) GTEST_SKIP() << "gio is not installed";
  const fs::path strange = folder.path() / R"(a "b" $c `d` \e)";
  const fs::path trace = folder.path() / "trace";
  fs::create_directory(strange);
  std::ofstream(strange / "staylit") << "#!/bin/sh\necho started >\"" << trace.string() << "\"\n";
  fs::permissions(strange / "staylit", fs::perms::owner_all);
  ASSERT_EQ(AutostartEntry(strange / "staylit").registerItem(), std::nullopt);
  ASSERT_EQ(std::system(("gio launch '" + file().string() + "' >/dev/null 2>&1").c_str()), 0);
  for (int attempt = 0; attempt < 1000 && textOf(trace).empty(); ++attempt)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_EQ(textOf(trace), "started\n");
}

TEST_F(AutostartEntryTest, IsValidByTheDesktopFileRules) {
  const ScopedEnvironment usual("PATH", "/usr/bin:/bin");
  if (!testing::isInstalled("desktop-file-validate"))
    GTEST_SKIP() << "desktop-file-validate is not installed";
  ASSERT_EQ(AutostartEntry("/opt/100% of $it/staylit").registerItem(), std::nullopt);
  EXPECT_EQ(std::system(("desktop-file-validate '" + file().string() + "'").c_str()), 0);
}

}  // namespace
}  // namespace platform
