#include <fstream>
#include <sstream>

#include "Platform/Linux/Settings/TomlDefaults.h"
#include "Staylit/Desktop/Windows/Apps/AppsList.h"
#include "Staylit/Desktop/Windows/Settings/SettingsForm.h"
#include "Staylit/Desktop/Windows/Settings/StepSlider.h"
#include "Staylit/Desktop/Windows/Settings/Switch.h"
#include "Tests/Platform/Support/TemporaryFolder.h"
#include "Tests/Shell/Windows/WindowsTest.h"

namespace staylit {
namespace {

using windows::AppsList;
using windows::SettingsForm;
using windows::StepSlider;
using windows::Switch;
using Control = SettingsView::Control;

/// The windows with the real settings file behind them.
class SettingsFileTest : public WindowsTest {
 protected:
  void SetUp() override {
    engine.reset();
    fakes.ports.defaults =
        std::make_shared<platform::TomlDefaults>(folder.path() / "settings.toml");
    engine = std::make_unique<StaylitEngine>(fakes.ports);
  }
  /// The windows end before the store, which they read until then.
  void TearDown() override { engine.reset(); }

  QWidget* shown(Window& window, const char* title) {
    QWidget* widget = findWindow(title);
    window.makeKeyAndOrderFront();
    turn();
    EXPECT_TRUE(QTest::qWaitForWindowActive(widget));
    return widget;
  }
  bool says(const std::string& line) const {
    fakes.ports.defaults->finishWriting();
    std::stringstream text;
    text << "\n" << std::ifstream(folder.path() / "settings.toml").rdbuf();
    return text.str().find("\n" + line + "\n") != std::string::npos;
  }

  platform::testing::TemporaryFolder folder;
};

TEST_F(SettingsFileTest, HoldsTheChangesOfTheSettingsWindowAndKeepsComments) {
  folder.write("settings.toml", "# mine\ngraceSeconds = 60\n");
  SettingsView view(*engine, fakes.ports);
  const auto window =
      WindowSystem::shared().kit().makeSettingsWindow({"Staylit Settings", {460, 560}}, view);
  auto& form = childOf<SettingsForm>(*shown(*window, "Staylit Settings"));
  childOf<StepSlider>(*form.row(Control::grace)).setFocus(Qt::TabFocusReason);
  press(Qt::Key_End);
  QTest::mouseClick(&childOf<Switch>(*form.row(Control::keepScreenOn)), Qt::LeftButton);
  turn();
  EXPECT_TRUE(says("# mine"));
  EXPECT_TRUE(says("graceSeconds = 600"));
  EXPECT_TRUE(says("keepScreenOn = true"));
}

TEST_F(SettingsFileTest, HoldsWhichApplicationsAreIgnored) {
  AppsView view(*engine, fakes.ports);
  const auto window =
      WindowSystem::shared().kit().makeAppsWindow({"Choose Apps", {460, 560}}, view);
  auto& list = childOf<AppsList>(*shown(*window, "Choose Apps"));
  type("xcode");
  turn();
  press(Qt::Key_Down);
  press(Qt::Key_Return);
  turn();
  EXPECT_TRUE(list.apps().indexOf("com.apple.dt.Xcode").isValid());
  EXPECT_TRUE(says("ignoredApps = [\"com.apple.dt.Xcode\"]"));
}

}  // namespace
}  // namespace staylit
