#include "Staylit/Desktop/History/PageWriter.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "Staylit/Desktop/CommandLine.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/Platform/Support/ScopedEnvironment.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace staylit {
namespace {

using platform::testing::ScopedEnvironment;
using platform::testing::TemporaryFolder;

std::string contentOf(const std::string& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// A user with a history of some work on 20 November 2026, and nothing that shows pages.
class PageWriterTest : public ::testing::Test {
 protected:
  PageWriterTest() {
    folder_.write(
        "state/staylit/history/00000001-20261120.jsonl",
        R"({"at":"2026-11-20T10:00:00.000Z","run":1,"ms":1000,"kind":"started","version":"1"})"
        "\n"
        R"({"at":"2026-11-20T12:00:00.000Z","run":1,"ms":7201000,"kind":"stopped"})"
        "\n");
    for (const char* name : {"state", "state/staylit", "state/staylit/history"})
      ::chmod(folder_.path(name).c_str(), 0700);
    std::filesystem::create_directory(folder_.path("run"));
    request_.days.since = "2026-11-20";
    request_.days.until = "2026-11-20";
    request_.file = folder_.path("page.html");
  }

  int write() { return writeHistoryPage(request_, console_); }
  [[nodiscard]] std::string errors() const { return console_.error; }

  TemporaryFolder folder_;
  ScopedEnvironment zone_{"TZ", "UTC0"};
  ScopedEnvironment given_{"STATE_DIRECTORY", nullptr};
  ScopedEnvironment state_{"XDG_STATE_HOME", folder_.path("state")};
  ScopedEnvironment config_{"XDG_CONFIG_HOME", folder_.path("config")};
  ScopedEnvironment run_{"XDG_RUNTIME_DIR", folder_.path("run")};
  ScopedEnvironment tools_{"PATH", folder_.path("tools")};
  ScopedEnvironment display_{"DISPLAY", nullptr};
  ScopedEnvironment wayland_{"WAYLAND_DISPLAY", nullptr};
  ScopedEnvironment bus_{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus"};
  tidewell::FakeConsole console_;
  PageRequest request_;
};

TEST_F(PageWriterTest, WritesThePageForItsOwnerAlone) {
  EXPECT_EQ(write(), 0) << errors();
  EXPECT_NE(contentOf(request_.file).find("<h2 id=\"2026-11-20\">"), std::string::npos);
  struct stat status {};
  ASSERT_EQ(::stat(request_.file.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600U);
  EXPECT_EQ(console_.output, "");
}

TEST_F(PageWriterTest, WritesToStandardOutput) {
  request_.file = "-";
  EXPECT_EQ(write(), 0) << errors();
  EXPECT_TRUE(console_.output.starts_with("<!DOCTYPE html>\n"));
  EXPECT_TRUE(console_.output.ends_with("</html>\n"));
}

TEST_F(PageWriterTest, SaysWhyAPageCannotBeWritten) {
  std::filesystem::create_symlink("/dev/null", request_.file);
  EXPECT_EQ(write(), 2);
  EXPECT_EQ(errors(), "staylit: " + request_.file +
                          " cannot be written: there is a symbolic link in its place\n");
}

TEST_F(PageWriterTest, SaysWhatIsNoTime) {
  request_.days.since = "never";
  EXPECT_EQ(write(), 2);
  EXPECT_NE(errors().find("never"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(request_.file));
}

TEST_F(PageWriterTest, ShowsAPageOfTheRuntimeFolder) {
  const std::string called = folder_.path("called");
  folder_.writeScript("tools/xdg-open", "echo \"$1\" > " + called);
  request_.file.clear();
  request_.opens = true;
  EXPECT_EQ(write(), 0) << errors();
  const std::string page = folder_.path("run/staylit/history.html");
  EXPECT_EQ(contentOf(called), page + "\n");
  EXPECT_TRUE(contentOf(page).starts_with("<!DOCTYPE html>\n"));
}

TEST_F(PageWriterTest, SaysWhereThePageIsThatNobodyShows) {
  request_.opens = true;
  console_.errorTerminal = true;
  EXPECT_EQ(write(), 2);
  EXPECT_EQ(errors(),
            "staylit: no program here shows web pages; the page is " + request_.file + "\n");
  EXPECT_TRUE(std::filesystem::exists(request_.file));
}

TEST_F(PageWriterTest, ShowsNoPageOfStandardOutput) {
  request_.opens = true;
  request_.file = "-";
  EXPECT_EQ(write(), 2);
  EXPECT_EQ(errors(), "staylit: --open needs a page in a file\n");
}

TEST(DesktopFile, AsksOnlyForWhatTheProgramKnows) {
  std::ifstream file(STAYLIT_DESKTOP_FILE);
  std::string line;
  int actions = 0;
  while (std::getline(file, line)) {
    if (!line.starts_with("Exec=")) continue;
    std::vector<std::string> words;
    for (std::size_t from = line.find('=') + 1, to = 0; to != std::string::npos; from = to + 1) {
      to = line.find(' ', from);
      words.push_back(line.substr(from, to == std::string::npos ? to : to - from));
    }
    EXPECT_EQ(CommandLine(words).complaint(), std::nullopt) << line;
    ++actions;
  }
  EXPECT_EQ(actions, 6);
}

}  // namespace
}  // namespace staylit
