#include <QAccessible>
#include <QPushButton>

#include "Staylit/Desktop/Windows/Apps/AppsList.h"
#include "Staylit/Desktop/Windows/Parts/Spoken.h"
#include "Staylit/Desktop/Windows/Settings/SettingsForm.h"
#include "Staylit/Desktop/Windows/Settings/StepSlider.h"
#include "Staylit/Desktop/Windows/Settings/Switch.h"
#include "Tests/Shell/Windows/WindowsTest.h"

namespace staylit {
namespace {

using windows::AppsList;
using windows::StepSlider;
using windows::Switch;
using Control = SettingsView::Control;

class SpokenTest : public WindowsTest {
 protected:
  void openApps() { open(WindowSystem::shared().kit().makeAppsWindow({"Apps", {460, 560}}, apps)); }
  void openSettings() {
    open(WindowSystem::shared().kit().makeSettingsWindow({"Settings", {460, 560}}, settings));
  }

  AppsList& list() { return childOf<AppsList>(*widget); }
  template <typename Kind>
  Kind& control(Control which) {
    return childOf<Kind>(*childOf<windows::SettingsForm>(*widget).row(which));
  }
  void standOn(const std::string& id) {
    list().setFocus(Qt::TabFocusReason);
    list().putKeyboardOn(list().apps().indexOf(id));
    turn();
  }

  /// What was announced last.
  std::string said() { return windows::Announcer::of(*widget).spokenName().toStdString(); }

  static QAccessibleInterface& spoken(QWidget& widget) {
    return *QAccessible::queryAccessibleInterface(&widget);
  }
  /// The role and name of everything that is met in the widget and is in sight, in this order.
  /// What only groups has neither.
  static void meet(QAccessibleInterface& here, Texts& met) {
    const bool isGroup = here.role() == QAccessible::Client;
    const bool isMet = !isGroup && !here.state().invisible;
    if (isMet) met.push_back(role(here) + " " + here.text(QAccessible::Name).toStdString());
    for (int number = 0; number < here.childCount(); ++number)
      meet(*here.child(number), met);
  }
  static Texts met(QWidget& widget) {
    Texts texts;
    meet(spoken(widget), texts);
    return texts;
  }

  std::unique_ptr<Window> window;
  QWidget* widget = nullptr;

 private:
  static std::string role(QAccessibleInterface& of) {
    switch (of.role()) {
      case QAccessible::Window:
        return "window";
      case QAccessible::Heading:
        return "heading";
      case QAccessible::Grouping:
        return "group";
      case QAccessible::StaticText:
        return "text";
      case QAccessible::Slider:
        return "slider";
      case QAccessible::CheckBox:
        return "check box";
      case QAccessible::EditableText:
        return "field";
      case QAccessible::List:
        return "list";
      case QAccessible::ListItem:
        return "item";
      case QAccessible::PushButton:
        return "button";
      default:
        return "role " + std::to_string(of.role());
    }
  }

  void open(std::unique_ptr<Window> made) {
    window = std::move(made);
    window->makeKeyAndOrderFront();
    turn();
    widget = QApplication::activeWindow();
    ASSERT_NE(widget, nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowActive(widget));
  }

  AppsView apps{*engine, fakes.ports};
  SettingsView settings{*engine, fakes.ports};
};

TEST_F(SpokenTest, SettingsAreMetInTheirOrderAndOnce) {
  openSettings();
  EXPECT_EQ(
      met(*widget),
      (Texts{"window Settings", "heading Sleep", "group Sleep",
             "slider Wait 2 minutes after work stops", "check box Keep the screen on too",
             "check box Work with the lid closed", "heading Battery", "group Battery",
             "slider Stop holding below 20%", "check box Respect Low Power Mode",
             "text Right now: plugged in", "heading Detection", "group Detection",
             "check box Trust apps that ask to stay awake", "heading Apps", "group Apps",
             "text Watching: everything",
             "text Choose which apps may keep your Mac awake from the menu bar icon\u00a0\u2192"
             "\u00a0Choose Apps.",
             "check box Open at login"}));
}

TEST_F(SpokenTest, ChooseAppsIsMetFromTheTopToTheBottom) {
  ignore({"make"});
  openApps();
  childOf<QLineEdit>(*widget).setText("ake");
  turn();
  EXPECT_EQ(met(*widget), (Texts{"window Apps", "heading Choose Apps",
                                 "text Click any app to move it between the two lists.",
                                 "field Search", "button Clear search", "list Choose Apps",
                                 "item Staying awake for, 1", "item HandBrake, watching",
                                 "item Not watching, 1", "item make / cmake, not watching",
                                 "text 1 ignored", "button Watch everything"}));
}

TEST_F(SpokenTest, TheSearchSaysWhatTheWindowIsForAndNotItsNameTwice) {
  openApps();
  EXPECT_EQ(spoken(childOf<QLineEdit>(*widget)).text(QAccessible::Description),
            "Click any app to move it between the two lists.");
}

TEST_F(SpokenTest, AMoveIsSaid) {
  openApps();
  standOn("com.apple.dt.Xcode");
  press(Qt::Key_Return);
  EXPECT_EQ(said(), "Xcode, not watching");
}

TEST_F(SpokenTest, AMoveOfAnApplicationThatIsNotKnownIsSaidThoughItHasNoRowAnyMore) {
  ignore({"com.example.nightly"});
  openApps();
  standOn("com.example.nightly");
  press(Qt::Key_Return);
  EXPECT_EQ(said(), "com.example.nightly, watching");
}

TEST_F(SpokenTest, WatchingEverythingAgainIsSaid) {
  ignore({"make"});
  openApps();
  childOf<QPushButton>(*widget).setFocus(Qt::TabFocusReason);
  press(Qt::Key_Space);
  EXPECT_EQ(said(), "Watching everything");
}

TEST_F(SpokenTest, WhatASearchFoundIsSaidWhenTheUserPauses) {
  openApps();
  type("xcode");
  EXPECT_EQ(said(), "");
  EXPECT_TRUE(QTest::qWaitFor([this] { return !said().empty(); }, 10'000));
  EXPECT_EQ(said(), "Staying awake for, 1. Not watching, 0");
}

TEST_F(SpokenTest, ASliderSaysItsValueInWordsWhenTheUserPauses) {
  openSettings();
  control<StepSlider>(Control::grace).setFocus(Qt::TabFocusReason);
  press(Qt::Key_Right);
  press(Qt::Key_Right);
  EXPECT_EQ(said(), "");
  EXPECT_TRUE(QTest::qWaitFor([this] { return !said().empty(); }, 10'000));
  EXPECT_EQ(said(), "3 minutes");
}

TEST_F(SpokenTest, AnErrorOfTheLidSwitchIsSaid) {
  openSettings();
  fakes.scripts.nextOutcomes.push_back(tidewell::FakePrivilegedScripts::declined());
  control<Switch>(Control::lidClosed).setFocus(Qt::TabFocusReason);
  press(Qt::Key_Space);
  EXPECT_EQ(said(), "Administrator approval was declined.");
  windows::Announcer::of(*widget).say("something else");
  fakes.scripts.nextOutcomes.push_back(tidewell::FakePrivilegedScripts::declined());
  press(Qt::Key_Space);
  EXPECT_EQ(said(), "Administrator approval was declined.") << "each time";
}

TEST_F(SpokenTest, ASliderSaysEachStepOtherwise) {
  openSettings();
  control<StepSlider>(Control::grace).setFocus(Qt::TabFocusReason);
  press(Qt::Key_Right);
  EXPECT_TRUE(QTest::qWaitFor([this] { return !said().empty(); }, 10'000));
  EXPECT_EQ(said(), "150 seconds");
}

TEST_F(SpokenTest, ASearchWithoutAHitKeepsTheKeyboardAndSaysSo) {
  openApps();
  type("no such application");
  press(Qt::Key_Down);
  EXPECT_EQ(said(), "Staying awake for, 0. Not watching, 0");
  EXPECT_FALSE(list().hasFocus());
}

TEST_F(SpokenTest, TheButtonThatTakesAllBackSaysHowManyThereAre) {
  ignore({"make", "rsync"});
  openApps();
  EXPECT_EQ(spoken(childOf<QPushButton>(*widget)).text(QAccessible::Description).toStdString(),
            "2 ignored");
}

}  // namespace
}  // namespace staylit
