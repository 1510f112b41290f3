// The rules that a window system relies on when it draws the menu and the settings.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

#include "Staylit/MenuBarController.h"
#include "Staylit/SettingsView.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Fakes/FakeUserInterface.h"

namespace staylit {
namespace {

using Action = MenuItem::Action;
using Control = SettingsView::Control;
using Texts = std::vector<std::string>;

class WindowSystemContract : public testing::Test {
 protected:
  /// The item as a window system hands it back that keeps only what the item was about.
  static MenuItem only(Action action, std::optional<std::string> representedObject = {}) {
    MenuItem item;
    item.action = action;
    item.representedObject = std::move(representedObject);
    return item;
  }

  std::optional<Texts> ignored() { return fakes.defaults.stringList("ignoredApps"); }

  tidewell::FakePorts fakes;
  FakeUserInterface userInterface;
  std::unique_ptr<StaylitEngine> engine = std::make_unique<StaylitEngine>(fakes.ports);
};

TEST_F(WindowSystemContract, AnItemIsKnownByItsActionAlone) {
  MenuBarController controller(*engine, userInterface, fakes.ports);
  controller.perform(only(Action::togglePause));
  EXPECT_TRUE(engine->isPaused());
  controller.perform(only(Action::togglePause));
  EXPECT_FALSE(engine->isPaused());
}

TEST_F(WindowSystemContract, AnApplicationIsKnownByTheRepresentedObjectAlone) {
  MenuBarController controller(*engine, userInterface, fakes.ports);
  controller.perform(only(Action::toggleApp, "com.apple.dt.Xcode"));
  EXPECT_EQ(ignored(), (Texts{"com.apple.dt.Xcode"}));
  controller.perform(only(Action::toggleApp, "com.apple.dt.Xcode"));
  EXPECT_EQ(ignored(), Texts{});
}

TEST_F(WindowSystemContract, AnItemAboutNoApplicationTogglesNone) {
  fakes.defaults.setStringList("ignoredApps", {"make"});
  MenuBarController controller(*engine, userInterface, fakes.ports);
  controller.perform(only(Action::toggleApp));
  EXPECT_EQ(ignored(), (Texts{"make"}));
}

/// The rows and their kinds, without their texts.
std::vector<std::tuple<std::size_t, Control, std::size_t>> shapeOf(const SettingsView& view) {
  std::vector<std::tuple<std::size_t, Control, std::size_t>> shape;
  const std::vector<SettingsView::Section> form = view.form();
  for (std::size_t section = 0; section < form.size(); ++section) {
    for (const SettingsView::Row& row : form[section].rows)
      shape.emplace_back(section, row.control, row.content.index());
  }
  return shape;
}

TEST_F(WindowSystemContract, TheSettingsKeepTheirRowsWhateverTheyRead) {
  SettingsView view(*engine, fakes.ports);
  const auto shape = shapeOf(view);
  ASSERT_EQ(shape.size(), 9U);
  view.setValue(Control::grace, 600);
  view.setValue(Control::battery, 0);
  for (const Control control : {Control::keepScreenOn, Control::lidClosed, Control::respectLowPower,
                                Control::honorAssertions, Control::launchAtLogin}) {
    view.setOn(control, true);
    view.setOn(control, false);
  }
  fakes.defaults.setStringList("ignoredApps", {"make"});
  EXPECT_EQ(shapeOf(view), shape);
}

TEST_F(WindowSystemContract, EveryMarkOfASliderIsOffered) {
  SettingsView view(*engine, fakes.ports);
  std::vector<std::int64_t> marks;
  for (const SettingsView::Section& section : view.form()) {
    for (const SettingsView::Row& row : section.rows) {
      const auto* slider = std::get_if<SettingsView::Slider>(&row.content);
      if (slider == nullptr) continue;
      EXPECT_EQ((slider->maximum - slider->minimum) % slider->step, 0) << row.label;
      marks.push_back((slider->maximum - slider->minimum) / slider->step + 1);
    }
  }
  EXPECT_EQ(marks, (std::vector<std::int64_t>{20, 11}));
}

}  // namespace
}  // namespace staylit
