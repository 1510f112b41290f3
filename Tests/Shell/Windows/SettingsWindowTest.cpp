#include <QAccessible>
#include <QScrollArea>
#include <QScrollBar>
#include <QWheelEvent>
#include <algorithm>
#include <set>

#include "Staylit/Desktop/Windows/Parts/Card.h"
#include "Staylit/Desktop/Windows/Parts/TextLabel.h"
#include "Staylit/Desktop/Windows/Settings/SettingsForm.h"
#include "Staylit/Desktop/Windows/Settings/SettingsRow.h"
#include "Staylit/Desktop/Windows/Settings/StepSlider.h"
#include "Staylit/Desktop/Windows/Settings/Switch.h"
#include "Tests/Fakes/FakeTranslator.h"
#include "Tests/Shell/Windows/WindowsTest.h"

namespace staylit {
namespace {

using tidewell::FakePrivilegedScripts;
using windows::SettingsForm;
using windows::StepSlider;
using windows::Switch;
using Control = SettingsView::Control;

constexpr const char* kSettingsTitle = "Staylit Settings";
constexpr const char* kDeclined = "Administrator approval was declined.";

class SettingsWindowTest : public WindowsTest {
 protected:
  void SetUp() override { open(); }

  void open() {
    window.reset();
    view = std::make_unique<SettingsView>(*engine, fakes.ports);
    window = WindowSystem::shared().kit().makeSettingsWindow({kSettingsTitle, {460, 560}}, *view);
    widget = findWindow(kSettingsTitle);
    window->makeKeyAndOrderFront();
    turn();
    ASSERT_TRUE(QTest::qWaitForWindowActive(widget));
  }

  SettingsForm& form() { return childOf<SettingsForm>(*widget); }
  QScrollArea& area() { return childOf<QScrollArea>(*widget); }
  StepSlider& slider(Control control) { return childOf<StepSlider>(*form().row(control)); }
  Switch& toggle(Control control) { return childOf<Switch>(*form().row(control)); }

  /// The visible texts of a row, from top to bottom.
  Texts texts(Control control) {
    auto labels = childrenOf<windows::TextLabel>(*form().row(control));
    std::ranges::stable_sort(labels, {}, [](const auto* label) { return label->y(); });
    Texts result;
    for (const auto* label : labels) {
      if (label->isVisible()) result.push_back(label->text().toStdString());
    }
    return result;
  }
  std::string label(Control control) { return texts(control).front(); }
  bool shows(Control control, const std::string& text) {
    return std::ranges::count(texts(control), text) > 0;
  }

  void click(QWidget& control) {
    area().ensureWidgetVisible(&control);
    QTest::mouseClick(&control, Qt::LeftButton);
  }
  void answer(bool approved) {
    fakes.scripts.nextOutcomes.push_back(approved ? FakePrivilegedScripts::Outcome{}
                                                  : FakePrivilegedScripts::declined());
  }
  /// Where the first letter of a line stands.
  int startOf(const QWidget& label) const {
    const bool isOnTheRight = label.layoutDirection() == Qt::RightToLeft;
    return label.mapTo(widget, QPoint(isOnTheRight ? label.width() : 0, 0)).x();
  }
  static std::string spoken(QWidget& control, QAccessible::Text kind) {
    return QAccessible::queryAccessibleInterface(&control)->text(kind).toStdString();
  }

  std::unique_ptr<SettingsView> view;
  std::unique_ptr<Window> window;
  QWidget* widget = nullptr;
};

// The window.

TEST_F(SettingsWindowTest, HasAFixedSizeAndIsAsHighAsItsForm) {
  EXPECT_EQ(form().width(), 460);
  EXPECT_GE(form().height(), 620);
  EXPECT_EQ(widget->size(), form().size());
  EXPECT_EQ(widget->minimumSize(), widget->maximumSize());
  EXPECT_EQ(area().verticalScrollBar()->maximum(), 0);
}

TEST_F(SettingsWindowTest, ScrollsTheFormWhereTheScreenHasNoRoomForIt) {
  widget->setFixedSize(460, 400);
  turn();
  EXPECT_EQ(area().verticalScrollBar()->maximum(), form().height() - 400);
}

TEST_F(SettingsWindowTest, CutsNoSwitchOffWhereTheScreenIsNarrow) {
  const int high = form().height();
  widget->setFixedSize(340, 560);
  turn();
  EXPECT_EQ(form().width(), 340);
  EXPECT_GT(form().height(), high) << "the captions have more lines";
  const QWidget& control = toggle(Control::keepScreenOn);
  EXPECT_LE(control.mapTo(widget, QPoint(control.width(), 0)).x(), 340);
}

TEST_F(SettingsWindowTest, LeavesRoomBetweenTheCardsAndTheScrollBar) {
  widget->setFixedSize(460, 400);
  turn();
  const auto& card = childOf<windows::Card>(form());
  const int right = card.mapTo(widget, QPoint(card.width(), 0)).x();
  for (const auto* bar : area().findChildren<QScrollBar*>()) {
    if (bar->isVisible() && bar->orientation() == Qt::Vertical) {
      EXPECT_LE(right, bar->mapTo(widget, QPoint(0, 0)).x());
    }
  }
}

TEST_F(SettingsWindowTest, BeginsAllTextsOnOneEdgeAlsoWhereTheScriptRunsToTheLeft) {
  for (const Qt::LayoutDirection direction : {Qt::LeftToRight, Qt::RightToLeft}) {
    QGuiApplication::setLayoutDirection(direction);
    open();
    std::set<int> edges;
    for (const Control control : {Control::grace, Control::keepScreenOn}) {
      for (const auto* label : childrenOf<windows::TextLabel>(*form().row(control))) {
        if (label->isVisible()) edges.insert(startOf(*label));
      }
    }
    EXPECT_EQ(edges.size(), 1U) << "in direction " << direction;
  }
  QGuiApplication::setLayoutDirection(Qt::LeftToRight);
}

TEST_F(SettingsWindowTest, ShowsTheWholeOfALongLabel) {
  tidewell::FakeTranslator translator;
  const std::string longLabel =
      "Se fier aux applications qui demandent que l'ordinateur soit maintenu en \u00e9veil";
  translator.translate("Keep the screen on too", longLabel);
  translator.translate("Wait {count} minutes after work stops", longLabel + " {count}");
  open();
  for (const Control control : {Control::grace, Control::keepScreenOn}) {
    const auto& shown = childOf<windows::TextLabel>(*form().row(control));
    EXPECT_GT(shown.height(), shown.fontMetrics().height() * 3 / 2) << "in two lines";
    EXPECT_LE(shown.heightForWidth(shown.width()), shown.height());
  }
}

TEST_F(SettingsWindowTest, EscapeAndControlWCloseIt) {
  press(Qt::Key_Escape);
  EXPECT_FALSE(widget->isVisible());
  window->makeKeyAndOrderFront();
  turn();
  press(Qt::Key_W, Qt::ControlModifier);
  EXPECT_FALSE(widget->isVisible());
}

TEST_F(SettingsWindowTest, ShowsTheFormOfTheView) {
  fakes.powerSources.setBattery(64);
  engine->tick();
  turn();
  EXPECT_EQ(texts(Control::grace), (Texts{"Wait 2 minutes after work stops",
                                          "A short pause between build steps won't drop the "
                                          "hold."}));
  EXPECT_EQ(label(Control::battery), "Stop holding below 20%");
  EXPECT_EQ(texts(Control::rightNow), (Texts{"Right now", "64% \u00b7 on battery"}));
  EXPECT_EQ(label(Control::launchAtLogin), "Open at login");
  EXPECT_EQ(slider(Control::grace).value(), 120);
  EXPECT_EQ(slider(Control::battery).maximum(), 50);
  EXPECT_TRUE(toggle(Control::honorAssertions).isChecked());
  EXPECT_FALSE(toggle(Control::keepScreenOn).isChecked());
}

TEST_F(SettingsWindowTest, NoTextIsCutOff) {
  for (const auto* text : childrenOf<windows::TextLabel>(form())) {
    if (!text->isVisible()) continue;
    const int needed =
        text->wordWrap() ? text->heightForWidth(text->width()) : text->sizeHint().height();
    EXPECT_GE(text->height(), needed) << text->text().toStdString();
    if (!text->wordWrap()) {
      EXPECT_GE(text->width(), text->sizeHint().width()) << text->text().toStdString();
    }
  }
}

// Sliders.

TEST_F(SettingsWindowTest, ASliderShowsItsValueAndItsFocusOnABlackGround) {
  QPalette black(Qt::white, Qt::black, Qt::white, Qt::black, Qt::gray, Qt::white, Qt::black);
  black.setColor(QPalette::Highlight, QColor(40, 60, 90));
  StepSlider& shown = slider(Control::battery);
  shown.setPalette(black);
  const QColor ground = windows::Surface::card(black).background;
  const auto signs = [&] {
    const QImage image = shown.grab().toImage();
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x)
        count += windows::contrast(image.pixelColor(x, y), ground) >= 2.9 ? 1 : 0;
    }
    return count;
  };
  shown.setValue(0);
  const int handle = signs();
  EXPECT_GE(handle, 100) << "the handle alone";
  shown.setValue(50);
  EXPECT_GT(signs(), 2 * handle) << "all of the groove is filled";
  const int withoutRing = signs();
  shown.setFocus(Qt::TabFocusReason);
  EXPECT_GT(signs(), withoutRing + 20);
}

TEST_F(SettingsWindowTest, TheRingOfASliderIsWholeAtBothEnds) {
  StepSlider& shown = slider(Control::battery);
  shown.setFocus(Qt::TabFocusReason);
  const QColor ground = windows::Surface::card(shown.palette()).background;
  const auto touches = [&](int x) {
    const QImage image = shown.grab().toImage();
    for (int y = 0; y < image.height(); ++y) {
      if (windows::contrast(image.pixelColor(x, y), ground) >= 2) return true;
    }
    return false;
  };
  shown.setValue(shown.minimum());
  EXPECT_FALSE(touches(0));
  shown.setValue(shown.maximum());
  EXPECT_FALSE(touches(shown.width() - 1));
}

TEST_F(SettingsWindowTest, ArrowKeysMoveASliderByItsStepAndStoreIt) {
  slider(Control::grace).setFocus(Qt::TabFocusReason);
  press(Qt::Key_Right);
  EXPECT_EQ(label(Control::grace), "Wait 2 minutes after work stops");
  EXPECT_EQ(stored("graceSeconds"), tidewell::PropertyValue(Integer{150}));
  press(Qt::Key_Right);
  EXPECT_EQ(label(Control::grace), "Wait 3 minutes after work stops");
  EXPECT_EQ(stored("graceSeconds"), tidewell::PropertyValue(Integer{180}));
  press(Qt::Key_Home);
  EXPECT_EQ(label(Control::grace), "Wait 30 seconds after work stops");
  press(Qt::Key_End);
  EXPECT_EQ(label(Control::grace), "Wait 10 minutes after work stops");
  EXPECT_EQ(stored("graceSeconds"), tidewell::PropertyValue(Integer{600}));
}

TEST_F(SettingsWindowTest, TheLabelFollowsTheHandleWhileItIsDragged) {
  StepSlider& battery = slider(Control::battery);
  area().ensureWidgetVisible(&battery);
  const int y = battery.height() / 2;
  // The handle stands at 20 of 50.
  QTest::mousePress(&battery, Qt::LeftButton, {}, QPoint(battery.width() * 2 / 5, y));
  QTest::mouseMove(&battery, QPoint(battery.width() * 4 / 5, y));
  EXPECT_TRUE(battery.isSliderDown());
  EXPECT_EQ(label(Control::battery), "Stop holding below 40%");
  EXPECT_EQ(stored("batteryThreshold"), tidewell::PropertyValue(Integer{40}));
  QTest::mouseMove(&battery, QPoint(battery.width() * 3 / 5 + 4, y));
  EXPECT_EQ(label(Control::battery), "Stop holding below 30%");
  QTest::mouseRelease(&battery, Qt::LeftButton, {}, QPoint(battery.width() * 3 / 5 + 4, y));
  EXPECT_EQ(battery.value(), 30);
  EXPECT_EQ(stored("batteryThreshold"), tidewell::PropertyValue(Integer{30}));
}

TEST_F(SettingsWindowTest, ShowingAValueStoresNothing) {
  fakes.defaults.stored["graceSeconds"] = Integer{45};
  fakes.defaults.written.clear();
  open();
  EXPECT_EQ(label(Control::grace), "Wait 45 seconds after work stops");
  EXPECT_EQ(fakes.defaults.written, Texts{});
}

TEST_F(SettingsWindowTest, TheWheelOverASliderChangesNoValue) {
  StepSlider& grace = slider(Control::grace);
  const QPointF middle = QRectF(grace.rect()).center();
  QWheelEvent wheel(middle, grace.mapToGlobal(middle), {}, QPoint(0, -120), Qt::NoButton,
                    Qt::NoModifier, Qt::NoScrollPhase, false);
  QApplication::sendEvent(&grace, &wheel);
  EXPECT_EQ(grace.value(), 120);
  EXPECT_FALSE(wheel.isAccepted());
}

// Toggles.

TEST_F(SettingsWindowTest, AClickOnASwitchFlipsItAndStoresIt) {
  click(toggle(Control::keepScreenOn));
  EXPECT_TRUE(toggle(Control::keepScreenOn).isChecked());
  EXPECT_EQ(stored("keepScreenOn"), tidewell::PropertyValue(true));
  click(toggle(Control::keepScreenOn));
  EXPECT_EQ(stored("keepScreenOn"), tidewell::PropertyValue(false));
}

TEST_F(SettingsWindowTest, AClickOnTheLabelOfASwitchFlipsItToo) {
  auto* row = form().row(Control::respectLowPower);
  QTest::mouseClick(row, Qt::LeftButton, {}, QPoint(20, row->height() / 2));
  EXPECT_FALSE(toggle(Control::respectLowPower).isChecked());
  EXPECT_EQ(stored("respectLowPower"), tidewell::PropertyValue(false));
}

TEST_F(SettingsWindowTest, SpaceAndReturnFlipTheSwitchThatHasTheKeyboard) {
  toggle(Control::honorAssertions).setFocus(Qt::TabFocusReason);
  press(Qt::Key_Space);
  EXPECT_EQ(stored("honorAppAssertions"), tidewell::PropertyValue(false));
  press(Qt::Key_Return);
  EXPECT_EQ(stored("honorAppAssertions"), tidewell::PropertyValue(true));
}

TEST_F(SettingsWindowTest, TabGoesThroughAllControlsInTheirOrder) {
  const std::vector<QWidget*> order = {
      &slider(Control::grace),           &toggle(Control::keepScreenOn),
      &toggle(Control::lidClosed),       &slider(Control::battery),
      &toggle(Control::respectLowPower), &toggle(Control::honorAssertions),
      &toggle(Control::launchAtLogin)};
  order.front()->setFocus(Qt::TabFocusReason);
  for (QWidget* control : order) {
    EXPECT_EQ(focus(), control);
    // The form scrolls to the widget that has the keyboard.
    EXPECT_TRUE(area().viewport()->rect().contains(
        control->mapTo(area().viewport(), control->rect().center())));
    press(Qt::Key_Tab);
  }
  EXPECT_EQ(focus(), order.front());
}

TEST_F(SettingsWindowTest, TabAndShiftTabShowTheWholeRowWithItsCaption) {
  widget->setFixedSize(460, 400);
  turn();
  slider(Control::grace).setFocus(Qt::TabFocusReason);
  for (int step = 0; step < 14; ++step) {
    const bool isBack = step >= 7;
    QTest::keyClick(focus(), Qt::Key_Tab, isBack ? Qt::ShiftModifier : Qt::NoModifier);
    turn();
    const QWidget* row = focus();
    while (row && !dynamic_cast<const windows::SettingsRow*>(row))
      row = row->parentWidget();
    ASSERT_TRUE(row);
    const QRect shown(row->mapTo(area().viewport(), QPoint(0, 0)), row->size());
    EXPECT_TRUE(area().viewport()->rect().contains(shown)) << "step " << step;
  }
}

TEST_F(SettingsWindowTest, TheLidSwitchIsStoredWhenItIsApproved) {
  answer(true);
  click(toggle(Control::lidClosed));
  EXPECT_TRUE(toggle(Control::lidClosed).isChecked());
  EXPECT_EQ(stored("allowLidClosed"), tidewell::PropertyValue(true));
  EXPECT_FALSE(shows(Control::lidClosed, kDeclined));
}

TEST_F(SettingsWindowTest, TheLidSwitchRestsAfterTheThirdDeclinedApproval) {
  for (int count = 0; count < 8; ++count)
    answer(false);
  click(toggle(Control::lidClosed));
  turn();
  turn();
  EXPECT_EQ(fakes.scripts.sources.size(), 3U);
  EXPECT_FALSE(toggle(Control::lidClosed).isChecked());
}

TEST_F(SettingsWindowTest, TheLidSwitchFlipsBackAndSaysWhyWhenItIsDeclined) {
  answer(false);
  const int before = form().height();
  click(toggle(Control::lidClosed));
  EXPECT_FALSE(toggle(Control::lidClosed).isChecked());
  EXPECT_EQ(texts(Control::lidClosed),
            (Texts{"Work with the lid closed", kDeclined,
                   "Needs your admin password once. Restored automatically if Staylit stops."}));
  EXPECT_FALSE(fakes.defaults.stored.contains("allowLidClosed"));
  EXPECT_GT(form().height(), before);
}

TEST_F(SettingsWindowTest, TheErrorDisappearsWithTheNextSuccess) {
  answer(false);
  click(toggle(Control::lidClosed));
  ASSERT_TRUE(shows(Control::lidClosed, kDeclined));
  // The flip back is a change too, so it asks again.
  answer(true);
  turn();
  EXPECT_FALSE(shows(Control::lidClosed, kDeclined));
  EXPECT_FALSE(toggle(Control::lidClosed).isChecked());
}

TEST_F(SettingsWindowTest, TheErrorIsRed) {
  answer(false);
  click(toggle(Control::lidClosed));
  for (const auto* text : childrenOf<windows::TextLabel>(form())) {
    if (text->text() != kDeclined) continue;
    const QColor color = text->palette().color(text->foregroundRole());
    EXPECT_GT(color.red(), 2 * color.green());
    EXPECT_GE(windows::contrast(color, windows::Surface::card(QApplication::palette()).background),
              4.5);
    return;
  }
  FAIL() << "no error is shown";
}

TEST_F(SettingsWindowTest, AFailingLoginItemFlipsItsSwitchBackEveryTime) {
  fakes.loginItem.registerFailure = "no such folder";
  for (int times = 0; times < 2; ++times) {
    click(toggle(Control::launchAtLogin));
    EXPECT_FALSE(toggle(Control::launchAtLogin).isChecked());
  }
  EXPECT_FALSE(fakes.defaults.stored.contains("launchAtLogin"));
}

// Following the engine.

TEST_F(SettingsWindowTest, FollowsPowerStateAndWatchList) {
  EXPECT_EQ(texts(Control::rightNow).back(), "plugged in");
  engine->powerState().set({true, 81, false, true});
  ignore({"make", "rsync"});
  turn();
  EXPECT_EQ(texts(Control::rightNow).back(), "81% \u00b7 plugged in");
  EXPECT_EQ(texts(Control::watching)[1], "all but 2");
}

TEST_F(SettingsWindowTest, KeepsTheKeyboardAndTheScrollPositionThroughChanges) {
  toggle(Control::honorAssertions).setFocus(Qt::TabFocusReason);
  widget->setFixedSize(460, 400);
  turn();
  area().verticalScrollBar()->setValue(40);
  Switch* before = &toggle(Control::honorAssertions);
  engine->powerState().set({true, 81, false, true});
  turn();
  EXPECT_EQ(focus(), before);
  EXPECT_EQ(&toggle(Control::honorAssertions), before);
  EXPECT_EQ(area().verticalScrollBar()->value(), 40);
}

TEST_F(SettingsWindowTest, AHandleThatIsHeldStaysHeldThroughChanges) {
  StepSlider& battery = slider(Control::battery);
  const int y = battery.height() / 2;
  QTest::mousePress(&battery, Qt::LeftButton, {}, QPoint(battery.width() * 2 / 5, y));
  engine->powerState().set({true, 81, false, true});
  turn();
  EXPECT_TRUE(battery.isSliderDown());
  QTest::mouseRelease(&battery, Qt::LeftButton, {}, QPoint(battery.width() * 2 / 5, y));
}

// Screen readers.

TEST_F(SettingsWindowTest, EveryControlHasANameAndSaysItsCaption) {
  EXPECT_EQ(spoken(slider(Control::grace), QAccessible::Name), "Wait 2 minutes after work stops");
  EXPECT_EQ(spoken(slider(Control::battery), QAccessible::Name), "Stop holding below 20%");
  EXPECT_EQ(
      spoken(slider(Control::grace), QAccessible::Description),
      "From 30 seconds to 10 minutes. A short pause between build steps won't drop the hold.");
  EXPECT_EQ(spoken(slider(Control::battery), QAccessible::Description), "From 0% to 50%.");
  EXPECT_EQ(spoken(toggle(Control::keepScreenOn), QAccessible::Name), "Keep the screen on too");
  EXPECT_EQ(spoken(toggle(Control::keepScreenOn), QAccessible::Description),
            "Off by default \u2014 the display sleeps on its own while work continues.");
  for (const Control control : {Control::lidClosed, Control::respectLowPower,
                                Control::honorAssertions, Control::launchAtLogin}) {
    EXPECT_EQ(spoken(toggle(control), QAccessible::Name), label(control));
  }
}

TEST_F(SettingsWindowTest, AScreenReaderTakesASwitchForACheckBox) {
  QAccessibleInterface* interface =
      QAccessible::queryAccessibleInterface(&toggle(Control::keepScreenOn));
  EXPECT_EQ(interface->role(), QAccessible::CheckBox);
  EXPECT_FALSE(interface->state().checked);
  click(toggle(Control::keepScreenOn));
  EXPECT_TRUE(interface->state().checked);
}

TEST_F(SettingsWindowTest, AScreenReaderReadsTheErrorWithItsSwitch) {
  answer(false);
  click(toggle(Control::lidClosed));
  EXPECT_EQ(spoken(toggle(Control::lidClosed), QAccessible::Description),
            std::string(kDeclined) +
                " Needs your admin password once. Restored automatically if Staylit stops.");
}

}  // namespace
}  // namespace staylit
