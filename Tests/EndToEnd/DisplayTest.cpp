#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Tests/EndToEnd/Machine.h"
#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/SilentDisplay.h"

namespace staylit::testing {
namespace {

using namespace std::chrono_literals;
using platform::testing::BusService;
using platform::testing::SilentDisplay;

/// The real program on a display, or with a windows module, that it cannot use.
class DisplayTest : public Machine {
 protected:
  void SetUp() override {
    Machine::SetUp();
    if (IsSkipped()) return;
    noWayland_.emplace("WAYLAND_DISPLAY", std::nullopt);
    notifications_.emplace(
        sessionDaemon->address(), std::vector<std::string>{"org.freedesktop.Notifications"},
        [this](sd_bus_message* call) {
          const char *name = nullptr, *icon = nullptr, *summary = nullptr;
          std::uint32_t replaces = 0;
          if (sd_bus_message_read(call, "suss", &name, &replaces, &icon, &summary) < 0) return;
          const std::lock_guard lock(mutex_);
          told_ = summary;
        });
  }
  std::string told() {
    const std::lock_guard lock(mutex_);
    return told_;
  }

 private:
  std::optional<ScopedEnvironment> noWayland_;
  std::mutex mutex_;
  std::string told_;
  std::optional<BusService> notifications_;
};

TEST_F(DisplayTest, ASilentDisplayStopsNothing) {
  SilentDisplay display;
  const ScopedEnvironment x("DISPLAY", display.name());
  const ChildProgram staylit = start();
  ASSERT_TRUE(eventually([this] { return !holdReason().empty(); }, 20s));
  EXPECT_EQ(wait(start({"--settings"})), 0);
  ASSERT_TRUE(eventually([&display] { return display.wasAsked(); }, 20s));
  EXPECT_EQ(wait(start({"--pause"})), 0);
  EXPECT_TRUE(eventually([this] { return holdReason().empty(); }, 20s));
  EXPECT_TRUE(eventually(
      [this] { return told() == "Staylit cannot show a window: the display does not answer"; },
      60s));
  ::kill(staylit.pid(), SIGTERM);
  ASSERT_TRUE(hasEnded(staylit, 20s));
  EXPECT_EQ(wait(staylit), 0);
}

TEST_F(DisplayTest, ASilentDisplayDoesNotKeepTheProgramFromEnding) {
  SilentDisplay display;
  const ScopedEnvironment x("DISPLAY", display.name());
  const ChildProgram staylit = start();
  ASSERT_TRUE(eventually([this] { return !holdReason().empty(); }, 20s));
  EXPECT_EQ(wait(start({"--choose-apps"})), 0);
  ASSERT_TRUE(eventually([&display] { return display.wasAsked(); }, 20s));
  ::kill(staylit.pid(), SIGTERM);
  ASSERT_TRUE(hasEnded(staylit, 20s));
  EXPECT_EQ(wait(staylit), 0);
  EXPECT_EQ(holdReason(), "");
}

TEST_F(DisplayTest, WindowsOfAnotherBuildAreNotUsed) {
  // The module looks as if the package had been replaced while the program runs.
  const ScopedEnvironment x("DISPLAY", ":4321");
  const std::filesystem::path installed = folder.path() / "installed";
  std::filesystem::create_directory(installed);
  std::filesystem::copy_file(STAYLIT_PROGRAM, installed / "staylit");
  std::filesystem::copy_file(UNICODE_MODULE, installed / "libstaylit-unicode.so");
  std::filesystem::copy_file(OTHER_BUILDS_MODULE, installed / "libstaylit-windows.so");
  const ChildProgram staylit({installed / "staylit"}, platform::testing::silence);
  ASSERT_TRUE(eventually([this] { return !holdReason().empty(); }, 20s));
  EXPECT_EQ(wait(start({"--settings"})), 0);
  EXPECT_TRUE(eventually(
      [this] {
        return told() == "Staylit cannot show a window: its windows are of another version";
      },
      30s));
  ::kill(staylit.pid(), SIGTERM);
  ASSERT_TRUE(hasEnded(staylit, 20s));
  EXPECT_EQ(wait(staylit), 0);
}

}  // namespace
}  // namespace staylit::testing
