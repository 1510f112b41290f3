#include <QApplication>
#include <QScreen>
#include <QThread>
#include <QTimer>
#include <clocale>
#include <memory>

#include "Staylit/Desktop/Windows/FixedWindow.h"
#include "Staylit/Desktop/Windows/PlatformChoice.h"
#include "Tests/Platform/Support/ScopedEnvironment.h"
#include "Tests/Shell/Windows/WindowsTest.h"

namespace staylit {
namespace {

class WindowKitTest : public WindowsTest {
 protected:
  void TearDown() override {
    system.onPump = nullptr;
    system.isStopping = false;
  }

  WindowSystem& system = WindowSystem::shared();
  WindowKit& kit = system.kit();
  AppsView apps{*engine, fakes.ports};
  SettingsView settings{*engine, fakes.ports};
};

// The loop.

TEST_F(WindowKitTest, RunsTheProgramsLoopUntilItStops) {
  int rounds = 0;
  system.onPump = [&] {
    if (++rounds < 3) {
      system.wake();
    } else {
      system.isStopping = true;
    }
  };
  system.wake();
  kit.run();
  EXPECT_EQ(rounds, 3);
}

TEST_F(WindowKitTest, ReturnsAtOnceWhenTheLoopIsStoppingAlready) {
  system.isStopping = true;
  kit.run();
  EXPECT_EQ(QThread::currentThread()->loopLevel(), 0);
}

TEST_F(WindowKitTest, RunsAgainAfterAStop) {
  for (int times = 0; times < 2; ++times) {
    system.isStopping = false;
    system.onPump = [&] { system.isStopping = true; };
    system.wake();
    kit.run();
  }
  EXPECT_TRUE(system.isStopping);
}

TEST_F(WindowKitTest, PumpsAfterTheWindowsOwnEventsToo) {
  // The descriptor does not become readable for work that a window's event schedules.
  QObject limit;
  bool isStuck = false;
  QTimer::singleShot(20000, &limit, [&] {
    isStuck = true;
    QCoreApplication::exit();
  });
  system.onPump = [&] { QTimer::singleShot(0, &limit, [&] { system.isStopping = true; }); };
  system.wake();
  kit.run();
  EXPECT_FALSE(isStuck);
}

TEST_F(WindowKitTest, GoesOnWhenTheLastWindowIsClosed) {
  const auto window = kit.makeSettingsWindow({"Staylit Settings", {460, 560}}, settings);
  bool wentOn = false;
  system.onPump = [&] {
    window->makeKeyAndOrderFront();
    QTimer::singleShot(0, qApp, [] { findWindow("Staylit Settings")->close(); });
    QTimer::singleShot(50, qApp, [&] {
      wentOn = true;
      system.isStopping = true;
      system.wake();
    });
    system.onPump = nullptr;
  };
  system.wake();
  kit.run();
  EXPECT_TRUE(wentOn);
}

// Screens and windows.

TEST_F(WindowKitTest, ListsThePrimaryScreensFrameFirst) {
  const QRect primary = QGuiApplication::primaryScreen()->availableGeometry();
  ASSERT_FALSE(kit.visibleFrames().empty());
  EXPECT_EQ(kit.visibleFrames().front().size.width, primary.width());
  EXPECT_EQ(kit.visibleFrames().size(),
            static_cast<std::size_t>(QGuiApplication::screens().size()));
}

TEST_F(WindowKitTest, PutsAWindowsFrameWhereItIsTold) {
  const auto window = kit.makeAppsWindow({"Choose Apps", {460, 560}}, apps);
  window->setFrameOrigin({40, 30});
  window->makeKeyAndOrderFront();
  EXPECT_EQ(findWindow("Choose Apps")->frameGeometry().topLeft(), QPoint(40, 30));
}

TEST_F(WindowKitTest, CentersAWindowOnItsScreen) {
  const auto window = kit.makeAppsWindow({"Choose Apps", {460, 560}}, apps);
  // A window knows its frame only once it was shown.
  window->makeKeyAndOrderFront();
  window->center();
  const QPoint middle = QGuiApplication::primaryScreen()->availableGeometry().center();
  EXPECT_EQ(findWindow("Choose Apps")->frameGeometry().center(), middle);
}

TEST_F(WindowKitTest, ActivatesTheWindowThatWasBroughtToTheFrontLast) {
  const auto first = kit.makeAppsWindow({"Choose Apps", {460, 560}}, apps);
  const auto second = kit.makeSettingsWindow({"Staylit Settings", {460, 560}}, settings);
  second->makeKeyAndOrderFront();
  first->makeKeyAndOrderFront();
  kit.activate();
  EXPECT_TRUE(QTest::qWaitForWindowActive(findWindow("Choose Apps")));
}

TEST_F(WindowKitTest, ActivatesNothingWhenTheWindowIsGone) {
  kit.makeAppsWindow({"Choose Apps", {460, 560}}, apps)->makeKeyAndOrderFront();
  kit.activate();
  EXPECT_EQ(findWindow("Choose Apps"), nullptr);
}

// The process.

TEST_F(WindowKitTest, LeavesAloneHowTheProgramReadsNumbersAndWordsErrors) {
  EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
  EXPECT_STREQ(std::setlocale(LC_MESSAGES, nullptr), "C");
}

TEST_F(WindowKitTest, NamesTheApplicationAsTheDesktopKnowsIt) {
  EXPECT_EQ(QGuiApplication::desktopFileName(), "com.staylit.app");
  EXPECT_EQ(QCoreApplication::applicationName(), "Staylit");
}

// Usable platforms.

class PlatformChoiceTest : public ::testing::Test {
 protected:
  /// The usable platform in an environment with these variables, of which absent ones are unset.
  static std::string with(const char* platform, const char* display, const char* wayland) {
    const platform::testing::ScopedEnvironment first("QT_QPA_PLATFORM", platform);
    const platform::testing::ScopedEnvironment second("DISPLAY", display);
    const platform::testing::ScopedEnvironment third("WAYLAND_DISPLAY", wayland);
    const auto found = windows::choosePlatform();
    return found ? found->name : "none";
  }
};

TEST_F(PlatformChoiceTest, ThereIsNoneWithoutADisplay) {
  EXPECT_EQ(with(nullptr, nullptr, nullptr), "none");
}

TEST_F(PlatformChoiceTest, ThereIsNoneOnADisplayThatRefuses) {
  EXPECT_EQ(with(nullptr, ":54321", nullptr), "none");
  EXPECT_EQ(with("xcb", ":54321", nullptr), "none");
  EXPECT_EQ(with(nullptr, nullptr, "no-such-socket"), "none");
  EXPECT_EQ(with("wayland", nullptr, "no-such-socket"), "none");
}

TEST_F(PlatformChoiceTest, ThereIsNoneWithoutAPlugin) {
  EXPECT_EQ(with("no-such-platform", nullptr, nullptr), "none");
}

TEST_F(PlatformChoiceTest, IsTheFirstWantedPlatformThatWorks) {
  EXPECT_EQ(with("offscreen", nullptr, nullptr), "offscreen");
  EXPECT_EQ(with("no-such-platform;xcb;minimal;offscreen", ":54321", nullptr), "minimal");
}

}  // namespace
}  // namespace staylit
