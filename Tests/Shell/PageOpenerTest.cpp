#include "Staylit/Desktop/History/PageOpener.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace staylit {
namespace {

using platform::testing::BusService;
using platform::testing::BusTest;
using platform::testing::ScopedEnvironment;
using platform::testing::TemporaryFolder;

/// A desktop's portal that answers each request to open a file in the same way.
class FakePortal {
 public:
  /// Without a response it refuses the call.
  FakePortal(const std::string& address, std::optional<unsigned> response)
      : response_(response),
        service_(address, {"org.freedesktop.portal.Desktop"},
                 [this](sd_bus_message* call) { answer(call); }) {}

  /// What stands in the file that it was given.
  std::string content() {
    const std::lock_guard lock(mutex_);
    return content_;
  }

 private:
  void answer(sd_bus_message* call) {
    if (std::string_view(sd_bus_message_get_member(call)) != "OpenFile" || !response_) {
      sd_bus_reply_method_errorf(call, "org.freedesktop.DBus.Error.UnknownMethod", "no");
      return;
    }
    const char* window = nullptr;
    int file = -1;
    const char* key = nullptr;
    const char* token = nullptr;
    sd_bus_message_read(call, "sh", &window, &file);
    sd_bus_message_enter_container(call, 'a', "{sv}");
    sd_bus_message_enter_container(call, 'e', "sv");
    sd_bus_message_read(call, "sv", &key, "s", &token);
    std::string text(100, '\0');
    const ssize_t size = ::read(file, text.data(), text.size());
    text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    {
      const std::lock_guard lock(mutex_);
      content_ = text;
    }
    std::string sender = sd_bus_message_get_sender(call) + 1;
    for (char& character : sender) {
      if (character == '.') character = '_';
    }
    const std::string request = "/org/freedesktop/portal/desktop/request/" + sender + "/" + token;
    sd_bus_reply_method_return(call, "o", request.c_str());
    sd_bus_emit_signal(sd_bus_message_get_bus(call), request.c_str(),
                       "org.freedesktop.portal.Request", "Response", "ua{sv}", *response_, 0);
  }

  std::optional<unsigned> response_;
  std::mutex mutex_;
  std::string content_;
  BusService service_;
};

class PageOpenerTest : public BusTest {
 protected:
  void SetUp() override {
    BusTest::SetUp();
    if (IsSkipped()) return;
    tools_.emplace("PATH", folder_.path().string());
    page_ = folder_.write("history.html", "the page");
    opener_ = std::make_unique<PageOpener>(*loop, *sessionBus);
  }

  void makePortal(std::optional<unsigned> response) {
    portal_ = std::make_unique<FakePortal>(sessionDaemon->address(), response);
  }
  /// A tool that keeps its arguments and ends with `status`.
  void makeTool(const std::string& name, const std::string& end) {
    folder_.writeScript(name, "echo \"$0 $*\" >> " + folder_.path("calls") + "\n" + end);
  }
  std::string calls() {
    std::ifstream stream(folder_.path("calls"));
    std::string text{std::istreambuf_iterator<char>(stream), {}};
    for (std::size_t at = 0; (at = text.find(folder_.path().string() + "/", at)) != text.npos;)
      text.erase(at, folder_.path().string().size() + 1);
    return text;
  }

  TemporaryFolder folder_;
  std::string page_;
  ScopedEnvironment display_{"DISPLAY", ":77"};
  ScopedEnvironment wayland_{"WAYLAND_DISPLAY", nullptr};
  std::optional<ScopedEnvironment> tools_;
  std::unique_ptr<FakePortal> portal_;
  std::unique_ptr<PageOpener> opener_;
};

TEST_F(PageOpenerTest, HandsThePageToThePortal) {
  makePortal(0);
  makeTool("xdg-open", "exit 0");
  EXPECT_EQ(opener_->open(page_), "");
  EXPECT_EQ(portal_->content(), "the page");
  EXPECT_EQ(calls(), "");
}

TEST_F(PageOpenerTest, AcceptsThatTheUserWantsItNoMore) {
  makePortal(1);
  makeTool("xdg-open", "exit 0");
  EXPECT_EQ(opener_->open(page_), "");
  EXPECT_EQ(calls(), "");
}

TEST_F(PageOpenerTest, AsksTheNextWhereThePortalFails) {
  makePortal(2);
  makeTool("xdg-open", "exit 0");
  EXPECT_EQ(opener_->open(page_), "");
  EXPECT_EQ(calls(), "xdg-open history.html\n");
}

TEST_F(PageOpenerTest, AsksTheNextWhereThePortalRefuses) {
  makePortal(std::nullopt);
  makeTool("xdg-open", "exit 0");
  EXPECT_EQ(opener_->open(page_), "");
  EXPECT_EQ(calls(), "xdg-open history.html\n");
}

TEST_F(PageOpenerTest, NeedsNoPortal) {
  makeTool("xdg-open", "exit 3");
  makeTool("gio", "exit 0");
  EXPECT_EQ(opener_->open(page_), "");
  EXPECT_EQ(calls(), "xdg-open history.html\ngio open history.html\n");
}

TEST_F(PageOpenerTest, AsksNoPortalWithoutADisplay) {
  const ScopedEnvironment none("DISPLAY", nullptr);
  makePortal(0);
  makeTool("xdg-open", "exit 0");
  EXPECT_EQ(opener_->open(page_), "");
  EXPECT_EQ(portal_->content(), "");
}

TEST_F(PageOpenerTest, TakesAToolThatStaysForTheBrowser) {
  const ScopedEnvironment tools("PATH", folder_.path().string() + ":/usr/bin:/bin");
  makeTool("xdg-open", "sleep 8");
  EXPECT_EQ(opener_->open(page_), "");
}

TEST_F(PageOpenerTest, SaysThatNothingShowsPages) {
  EXPECT_EQ(opener_->open(page_), "no program here shows web pages");
}

TEST_F(PageOpenerTest, WritesToTheRuntimeFolder) {
  const ScopedEnvironment runtime("XDG_RUNTIME_DIR", folder_.path("run"));
  std::filesystem::create_directory(folder_.path("run"));
  const PageOpener::Place place = PageOpener::place();
  EXPECT_EQ(place.error, "");
  EXPECT_EQ(place.file, folder_.path("run/staylit/history.html"));
  struct stat status {};
  ASSERT_EQ(::stat(folder_.path("run/staylit").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0700U);
}

TEST_F(PageOpenerTest, WritesToTheCacheWithoutARuntimeFolder) {
  const ScopedEnvironment runtime("XDG_RUNTIME_DIR", nullptr);
  const ScopedEnvironment cache("XDG_CACHE_HOME", folder_.path("new/cache"));
  EXPECT_EQ(PageOpener::place().file, folder_.path("new/cache/staylit/history.html"));
}

TEST_F(PageOpenerTest, SaysWhyThereIsNoFolderForThePage) {
  const ScopedEnvironment runtime("XDG_RUNTIME_DIR", folder_.path("none"));
  EXPECT_EQ(PageOpener::place().error,
            folder_.path("none/staylit") + ": No such file or directory");
}

}  // namespace
}  // namespace staylit
