#include "Staylit/Desktop/Windows/DisplayListeners.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QLibrary>
#include <QLibraryInfo>
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Posix/Files/Descriptor.h"
#include "Staylit/Desktop/Windows/PlatformChoice.h"
#include "Tests/Platform/Support/ScopedEnvironment.h"
#include "Tests/Platform/Support/SilentDisplay.h"
#include "Tests/Platform/Support/Stranger.h"

namespace staylit::windows {
namespace {

using platform::Descriptor;
using platform::testing::SilentDisplay;
using platform::testing::Stranger;

bool isStrangersX(const std::string& display) {
  return DisplayListeners(display).areStrangers();
}

/// Whether the other end has closed the connection.
bool isClosed(const Descriptor& connection) {
  char byte = 0;
  return ::recv(connection.get(), &byte, 1, MSG_DONTWAIT) == 0;
}

/// A process of another user that listens where clients of X look first.
class StrangersDisplay {
 public:
  StrangersDisplay() {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) std::abort();
    child_ = ::fork();
    if (child_ == 0) serve(ends[1]);
    ::close(ends[1]);
    words_ = Descriptor(ends[0]);
    std::array<char, 32> name{};
    if (::read(words_.get(), name.data(), name.size() - 1) > 0) name_ = name.data();
  }
  ~StrangersDisplay() {
    ::kill(child_, SIGKILL);
    ::waitpid(child_, nullptr, 0);
  }
  StrangersDisplay(const StrangersDisplay&) = delete;
  StrangersDisplay& operator=(const StrangersDisplay&) = delete;

  /// The display; empty when the process could not begin to listen.
  [[nodiscard]] const std::string& name() const { return name_; }

  /// Connects and sends `last`. Returns the first words of all callers up to this one.
  [[nodiscard]] std::string heardUntil(const std::string& last) const;

 private:
  /// Writes the display's name to `writing`, and then the first words of each caller.
  [[noreturn]] static void serve(int writing) {
    if (!Stranger::become()) ::_exit(1);
    SilentDisplay display;
    const std::string name = display.name();
    bool isWritten = ::write(writing, name.c_str(), name.size()) > 0;
    std::array<char, 256> words{};
    while (isWritten) {
      const Descriptor caller = display.nextCaller();
      const ssize_t count = ::read(caller.get(), words.data(), words.size());
      const auto size = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
      isWritten = ::write(writing, words.data(), size) >= 0;
    }
    ::_exit(0);
  }

  pid_t child_ = -1;
  std::string name_;
  Descriptor words_;
};

/// Connects to the address where clients of `display` look first.
Descriptor connectTo(const std::string& display) {
  const std::string path = "/tmp/.X11-unix/X" + display.substr(1);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path + 1, path.data(), path.size());
  Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + path.size());
  const bool isConnected =
      ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), size) == 0;
  return isConnected ? std::move(socket) : Descriptor();
}

std::string StrangersDisplay::heardUntil(const std::string& last) const {
  const Descriptor caller = connectTo(name_);
  if (::write(caller.get(), last.data(), last.size()) < 0) return "cannot be reached";
  std::string heard;
  std::array<char, 256> words{};
  while (!heard.ends_with(last)) {
    const ssize_t count = ::read(words_.get(), words.data(), words.size());
    if (count <= 0) break;
    heard.append(words.data(), static_cast<std::size_t>(count));
  }
  return heard;
}

bool hasPluginForX() {
  const QString folder = QLibraryInfo::path(QLibraryInfo::PluginsPath);
  return QLibrary(folder + QStringLiteral("/platforms/libqxcb.so")).load();
}

class StrangersDisplayTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can act as another user";
  }
  const platform::testing::ScopedEnvironment noWayland{"WAYLAND_DISPLAY", nullptr};
};

TEST_F(StrangersDisplayTest, AreStrangersWhenAnotherUserListens) {
  const StrangersDisplay strangers;
  ASSERT_NE(strangers.name(), "");
  const SilentDisplay own;
  EXPECT_TRUE(isStrangersX(strangers.name()));
  EXPECT_TRUE(isStrangersX("unix" + strangers.name()));
  EXPECT_TRUE(isStrangersX(strangers.name() + ".0"));
  EXPECT_FALSE(isStrangersX(own.name()));
  EXPECT_FALSE(isStrangersX(":54321"));
  EXPECT_FALSE(isStrangersX("")) << "none at all";
}

TEST_F(StrangersDisplayTest, AreNotGreetedWhenTheyAreStrangers) {
  if (!hasPluginForX()) GTEST_SKIP() << "Qt has no usable plugin for X here";
  const StrangersDisplay strangers;
  ASSERT_NE(strangers.name(), "");
  const platform::testing::ScopedEnvironment platform("QT_QPA_PLATFORM", "xcb");
  const platform::testing::ScopedEnvironment display("DISPLAY", strangers.name().c_str());
  EXPECT_FALSE(choosePlatform());
  EXPECT_EQ(strangers.heardUntil("the end"), "the end");
}

TEST(FullDisplayTest, CountsAsAStrangersBecauseItsUserCannotBeSeen) {
  SilentDisplay full;
  EXPECT_FALSE(isStrangersX(full.name()));
  std::vector<Descriptor> callers;
  for (Descriptor caller = connectTo(full.name()); caller; caller = connectTo(full.name()))
    callers.push_back(std::move(caller));
  EXPECT_TRUE(isStrangersX(full.name()));
  EXPECT_TRUE(full.wasAsked());
  EXPECT_FALSE(isStrangersX(full.name())) << "it has taken its callers";
}

TEST(DisplayListenersTest, KeepTheirConnectionsOpenAsLongAsTheyLive) {
  SilentDisplay display;
  std::optional<DisplayListeners> listeners(display.name());
  const Descriptor caller = display.nextCaller();
  EXPECT_FALSE(isClosed(caller));
  listeners.reset();
  EXPECT_TRUE(isClosed(caller));
}

TEST_F(StrangersDisplayTest, AreRecognisedByAConnectionThatIsThere) {
  const StrangersDisplay strangers;
  ASSERT_NE(strangers.name(), "");
  EXPECT_FALSE(isServedByStrangers());
  const Descriptor connection = connectTo(strangers.name());
  ASSERT_TRUE(connection);
  EXPECT_TRUE(isServedByStrangers());
}

}  // namespace
}  // namespace staylit::windows
