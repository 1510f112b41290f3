#include "Staylit/Desktop/Windows/DisplayServers.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <string>

#include "Platform/Linux/System/Descriptor.h"
#include "Staylit/Desktop/Windows/UsablePlatform.h"
#include "Tests/Platform/ScopedVariable.h"
#include "Tests/Platform/Support/SilentDisplay.h"
#include "Tests/Platform/Support/Stranger.h"

namespace staylit::windows {
namespace {

using platform::Descriptor;
using platform::testing::SilentDisplay;
using platform::testing::Stranger;

/// Somebody else's process, which listens where clients of X look first.
class StrangersDisplay {
 public:
  StrangersDisplay() {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) std::abort();
    child_ = ::fork();
    if (child_ == 0) serve(ends[1]);
    ::close(ends[1]);
    const Descriptor reading(ends[0]);
    std::array<char, 32> name{};
    if (::read(reading.get(), name.data(), name.size() - 1) > 0) name_ = name.data();
  }
  ~StrangersDisplay() {
    ::kill(child_, SIGKILL);
    ::waitpid(child_, nullptr, 0);
  }
  StrangersDisplay(const StrangersDisplay&) = delete;
  StrangersDisplay& operator=(const StrangersDisplay&) = delete;

  /// Empty when there is none.
  [[nodiscard]] const std::string& name() const { return name_; }

 private:
  [[noreturn]] static void serve(int writing) {
    if (!Stranger::become()) ::_exit(1);
    const SilentDisplay display;
    const std::string name = display.name();
    if (::write(writing, name.c_str(), name.size()) > 0) ::pause();
    ::_exit(0);
  }

  pid_t child_ = -1;
  std::string name_;
};

class DisplayServersTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can act as another user";
  }
  const platform::ScopedVariable noWayland{"WAYLAND_DISPLAY", nullptr};
};

TEST_F(DisplayServersTest, AreStrangersWhereAnotherUserListens) {
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

TEST_F(DisplayServersTest, AreNotGreetedWhenTheyAreStrangers) {
  // This one would never answer a greeting.
  const StrangersDisplay strangers;
  ASSERT_NE(strangers.name(), "");
  const platform::ScopedVariable platform("QT_QPA_PLATFORM", "xcb");
  const platform::ScopedVariable display("DISPLAY", strangers.name().c_str());
  EXPECT_FALSE(usablePlatform());
}

TEST_F(DisplayServersTest, AreSeenInAConnectionThatIsThere) {
  const StrangersDisplay strangers;
  ASSERT_NE(strangers.name(), "");
  EXPECT_FALSE(isServedByStrangers());
  const std::string path = "/tmp/.X11-unix/X" + strangers.name().substr(1);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path + 1, path.data(), path.size());
  const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  ASSERT_EQ(::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address),
                      static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + path.size())),
            0);
  EXPECT_TRUE(isServedByStrangers());
}

}  // namespace
}  // namespace staylit::windows
