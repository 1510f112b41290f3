#include "Platform/Posix/Files/LineFiles.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

namespace fs = std::filesystem;
using testing::TemporaryFolder;

std::string errorText(int number) {
  return std::generic_category().message(number);
}

/// In days since 1970.
int lineFilesDay = 20'000;
std::chrono::sys_seconds lineFilesNow() {
  return std::chrono::sys_days(std::chrono::days(lineFilesDay));
}

class LineFilesTest : public ::testing::Test {
 protected:
  void SetUp() override { lineFilesDay = 20'000; }

  LineFiles make(LineFiles::Limits limits = {}) const {
    return {folder, errorText, limits, lineFilesNow};
  }
  [[nodiscard]] std::string text() const { return LineFiles::read(folder, errorText).text; }
  [[nodiscard]] std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
      names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
  }
  [[nodiscard]] std::string precious() const {
    std::ifstream file(temporary.path("precious"));
    return {std::istreambuf_iterator<char>(file), {}};
  }
  [[nodiscard]] fs::path onlyFile() const { return folder / names().at(0); }

  TemporaryFolder temporary;
  fs::path folder = temporary.path() / "state/staylit/history";
};

TEST_F(LineFilesTest, AppendsLinesInTheirOrder) {
  LineFiles files = make();
  EXPECT_EQ(files.append("one"), std::nullopt);
  EXPECT_EQ(files.append("two"), std::nullopt);
  EXPECT_EQ(text(), "one\ntwo\n");
}

TEST_F(LineFilesTest, AreReadableByTheUserAlone) {
  const mode_t former = umask(0);
  make().append("one");
  umask(former);
  EXPECT_EQ(fs::status(folder).permissions(), fs::perms::owner_all);
  EXPECT_EQ(fs::status(temporary.path() / "state").permissions(), fs::perms::owner_all);
  EXPECT_EQ(fs::status(onlyFile()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(LineFilesTest, GoOnWhereAnEarlierProgramEnded) {
  make().append("one");
  make().append("two");
  EXPECT_EQ(text(), "one\ntwo\n");
  EXPECT_EQ(names().size(), 1U);
}

TEST_F(LineFilesTest, BeginALineOfTheirOwnAfterATornOne) {
  make().append("one");
  std::ofstream(onlyFile(), std::ios::app) << "to";
  LineFiles files = make();
  files.append("three");
  files.append("four");
  EXPECT_EQ(text(), "one\nto\nthree\nfour\n");
}

TEST_F(LineFilesTest, BeginAnotherFileWhenOneIsFull) {
  LineFiles files = make({.fileBytes = 20});
  for (const char* line : {"first line", "second", "third", "fourth"})
    files.append(line);
  EXPECT_EQ(text(), "first line\nsecond\nthird\nfourth\n");
  EXPECT_EQ(names(),
            (std::vector<std::string>{"00000001-20241004.jsonl", "00000002-20241004.jsonl"}));
}

TEST_F(LineFilesTest, TakeALineThatIsLongerThanAFile) {
  LineFiles files = make({.fileBytes = 20});
  files.append("short");
  files.append(std::string(100, 'x'));
  files.append("short");
  EXPECT_EQ(text(), "short\n" + std::string(100, 'x') + "\nshort\n");
  EXPECT_EQ(names().size(), 3U);
}

TEST_F(LineFilesTest, LetTheOldestFilesGoWhenThereAreTooMany) {
  LineFiles files = make({.fileBytes = 10, .files = 3});
  for (int number = 1; number <= 8; ++number)
    files.append("line " + std::to_string(number));
  EXPECT_EQ(text(), "line 6\nline 7\nline 8\n");
}

TEST_F(LineFilesTest, BeginAnotherFileAfterSomeDays) {
  LineFiles files = make();
  files.append("one");
  lineFilesDay += 5;
  files.append("two");
  EXPECT_EQ(names().size(), 1U);
  lineFilesDay += 1;
  files.append("three");
  EXPECT_EQ(names(),
            (std::vector<std::string>{"00000001-20241004.jsonl", "00000002-20241010.jsonl"}));
}

TEST_F(LineFilesTest, KeepNothingThatIsOlderThan90Days) {
  LineFiles files = make();
  for (int day = 0; day <= 96; day += 6) {
    lineFilesDay = 20'000 + day;
    files.append("day " + std::to_string(day));
  }
  EXPECT_TRUE(text().starts_with("day 12\n")) << text();
  EXPECT_TRUE(text().ends_with("day 96\n"));
}

TEST_F(LineFilesTest, KeepTheirLinesWhereTheClockIsWrongForAWhile) {
  LineFiles files = make();
  files.append("one");
  lineFilesDay = 60'000;
  files.append("in 2134");
  lineFilesDay = 20'001;
  files.append("two");
  EXPECT_EQ(text(), "one\nin 2134\ntwo\n");
}

TEST_F(LineFilesTest, BeginAgainWhenSomebodyDeletedThem) {
  LineFiles files = make();
  files.append("one");
  fs::remove_all(temporary.path() / "state");
  EXPECT_EQ(files.append("two"), std::nullopt);
  EXPECT_EQ(text(), "two\n");
  fs::remove(onlyFile());
  EXPECT_EQ(files.append("three"), std::nullopt);
  EXPECT_EQ(text(), "three\n");
}

TEST_F(LineFilesTest, KeepWhatSeveralProgramsAppendAtOnce) {
  std::vector<pid_t> children;
  for (int child = 0; child < 4; ++child) {
    const pid_t pid = fork();
    if (pid == 0) {
      LineFiles files = make({.fileBytes = 4'000, .files = 1'000});
      for (int number = 0; number < 500; ++number)
        files.append("child " + std::to_string(child) + " line " + std::to_string(number));
      _exit(0);
    }
    children.push_back(pid);
  }
  for (const pid_t pid : children)
    waitpid(pid, nullptr, 0);
  std::vector<std::string> lines;
  const std::string all = LineFiles::read(folder, errorText).text;
  std::size_t from = 0;
  for (std::size_t to = 0; (to = all.find('\n', from)) != std::string::npos; from = to + 1)
    lines.push_back(all.substr(from, to - from));
  ASSERT_EQ(lines.size(), 2'000U);
  for (int child = 0; child < 4; ++child) {
    int next = 0;
    for (const std::string& line : lines) {
      const std::string start = "child " + std::to_string(child) + " line ";
      if (!line.starts_with(start)) continue;
      EXPECT_EQ(line, start + std::to_string(next));
      ++next;
    }
    EXPECT_EQ(next, 500);
  }
}

TEST_F(LineFilesTest, LoseOnlyTheLineForWhichThereIsNoRoom) {
  const pid_t pid = fork();
  if (pid == 0) {
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_SETMASK, &all, nullptr);
    LineFiles files = make();
    const rlimit small{100, RLIM_INFINITY};
    const rlimit large{RLIM_INFINITY, RLIM_INFINITY};
    bool isRight = !files.append(std::string(80, 'a'));
    setrlimit(RLIMIT_FSIZE, &small);
    isRight = isRight && files.append(std::string(80, 'b')) && files.append("no room");
    setrlimit(RLIMIT_FSIZE, &large);
    isRight = isRight && !files.append(std::string(80, 'c'));
    _exit(isRight ? 0 : 1);
  }
  int status = 0;
  waitpid(pid, &status, 0);
  EXPECT_EQ(status, 0);
  const std::string all = text();
  EXPECT_EQ(
      all, std::string(80, 'a') + "\n" + std::string(19, 'b') + "\n" + std::string(80, 'c') + "\n");
}

TEST_F(LineFilesTest, RefuseAFolderThatOthersMayWriteTo) {
  fs::create_directories(folder);
  fs::permissions(folder, fs::perms::group_write, fs::perm_options::add);
  const auto why = make().append("one");
  EXPECT_EQ(why, "the folder belongs to another user, or others may write to it");
  EXPECT_TRUE(fs::is_empty(folder));
  EXPECT_EQ(LineFiles::read(folder, errorText).error, why);
}

TEST_F(LineFilesTest, FollowNoLinkInPlaceOfTheFolder) {
  fs::create_directories(folder.parent_path());
  fs::create_directories(temporary.path() / "elsewhere");
  fs::create_directory_symlink(temporary.path() / "elsewhere", folder);
  EXPECT_TRUE(make().append("one"));
  EXPECT_TRUE(fs::is_empty(temporary.path() / "elsewhere"));
}

TEST_F(LineFilesTest, FollowNoLinkInPlaceOfAFile) {
  temporary.write("precious", "text");
  fs::create_directories(folder);
  fs::create_symlink(temporary.path() / "precious", folder / "00000007-20241004.jsonl");
  EXPECT_EQ(make().append("one"), std::nullopt);
  EXPECT_EQ(precious(), "text");
  EXPECT_EQ(text(), "one\n") << "another file is begun";
}

TEST_F(LineFilesTest, AppendToNoFileThatHasAnotherName) {
  temporary.write("precious", "text\n");
  fs::create_directories(folder);
  fs::create_hard_link(temporary.path() / "precious", folder / "00000007-20241004.jsonl");
  EXPECT_EQ(make().append("one"), std::nullopt);
  EXPECT_EQ(precious(), "text\n");
  EXPECT_EQ(text(), "one\n");
}

TEST_F(LineFilesTest, SayWhyTheyCannotBeWritten) {
  temporary.write("state", "a file");
  EXPECT_EQ(make().append("one"), "Not a directory");
  EXPECT_EQ(LineFiles("", errorText).append("one"), "there is no folder for it");
}

TEST_F(LineFilesTest, LeaveFilesOfOtherNamesAlone) {
  make({.fileBytes = 1}).append("one");
  for (const char* name : {"notes.txt", "2-20241004.jsonl.bak", "x-20241004.jsonl", "3-2024.jsonl"})
    std::ofstream(folder / name) << "other\n";
  LineFiles files = make({.fileBytes = 1, .files = 1});
  files.append("two");
  EXPECT_EQ(text(), "two\n");
  EXPECT_EQ(names().size(), 5U);
}

TEST_F(LineFilesTest, TellWhenTheyWereWrittenLast) {
  EXPECT_EQ(make().lastWritten(), std::nullopt);
  LineFiles files = make();
  files.append("one");
  const auto old = std::chrono::file_clock::now() - std::chrono::hours(5);
  fs::last_write_time(onlyFile(), old);
  const auto age = [this] {
    const auto written = LineFiles::read(folder, errorText).lastWritten;
    return std::chrono::system_clock::now() - written.value_or(tidewell::WallTime());
  };
  EXPECT_GT(age(), std::chrono::minutes(299));
  files.refresh();
  EXPECT_LT(age(), std::chrono::minutes(1));
}

TEST_F(LineFilesTest, TellWhetherAProgramWritesThem) {
  EXPECT_FALSE(LineFiles::read(folder, errorText).isInUse);
  {
    LineFiles files = make();
    files.append("one");
    EXPECT_TRUE(LineFiles::read(folder, errorText).isInUse);
    LineFiles another = make();
    another.append("two");
    EXPECT_TRUE(LineFiles::read(folder, errorText).isInUse);
  }
  EXPECT_FALSE(LineFiles::read(folder, errorText).isInUse);
}

TEST_F(LineFilesTest, ReadNothingWhereNothingIs) {
  const LineFiles::Content content = LineFiles::read(folder, errorText);
  EXPECT_EQ(content.text, "");
  EXPECT_EQ(content.error, "");
  EXPECT_EQ(content.lastWritten, std::nullopt);
  EXPECT_FALSE(fs::exists(folder));
}

}  // namespace
}  // namespace platform
