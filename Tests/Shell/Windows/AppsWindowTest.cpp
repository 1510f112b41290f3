#include <QAccessible>
#include <QHelpEvent>
#include <QImage>
#include <QProxyStyle>
#include <QPushButton>
#include <QScrollBar>
#include <QToolTip>
#include <algorithm>

#include "Staylit/Desktop/Windows/Apps/AppsList.h"
#include "Staylit/Desktop/Windows/Apps/SearchField.h"
#include "Staylit/Desktop/Windows/Apps/SectionHead.h"
#include "Staylit/Desktop/Windows/Parts/TextLabel.h"
#include "Staylit/WatchList.h"
#include "Tests/Shell/Windows/WindowsTest.h"

namespace staylit {
namespace {

using tidewell::BusyApp;
using windows::AppsList;

constexpr const char* kTitle = "Choose Apps";

BusyApp busy(std::string id, std::string display, double cpuPercent) {
  BusyApp app;
  app.id = std::move(id);
  app.display = std::move(display);
  app.cpuPercent = cpuPercent;
  return app;
}

/// Wants far more room for a line edit than its text needs.
class RoomyStyle : public QProxyStyle {
 public:
  QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                         const QWidget* widget) const override {
    const QSize wanted = QProxyStyle::sizeFromContents(type, option, size, widget);
    return type == CT_LineEdit ? wanted + QSize(0, 30) : wanted;
  }
};

class AppsWindowTest : public WindowsTest {
 protected:
  void SetUp() override {
    open();
    ASSERT_TRUE(QTest::qWaitForWindowActive(widget));
  }

  void open() {
    if (!window) {
      window = WindowSystem::shared().kit().makeAppsWindow({kTitle, {460, 560}}, view);
      widget = findWindow(kTitle);
    }
    window->makeKeyAndOrderFront();
    turn();
  }

  AppsList& list() { return childOf<AppsList>(*widget); }
  QLineEdit& search() { return childOf<QLineEdit>(*widget); }
  QPushButton& button() { return childOf<QPushButton>(*widget); }

  QModelIndex row(const std::string& id) { return list().apps().indexOf(id); }
  std::string idAt(const QModelIndex& index) {
    return list().apps().isEntry(index) ? list().apps().line(index).id : "";
  }
  std::string current() { return idAt(list().currentIndex()); }
  Texts rows() {
    Texts result;
    for (int number = 0; number < list().model()->rowCount(); ++number) {
      const std::string id = idAt(list().model()->index(number, 0));
      if (!id.empty()) result.push_back(id);
    }
    return result;
  }
  std::string spoken(int number, int role = Qt::AccessibleTextRole) {
    return list().model()->index(number, 0).data(role).toString().toStdString();
  }
  int top(const std::string& id) { return list().visualRect(row(id)).top(); }
  int scrolled() { return list().verticalScrollBar()->value(); }
  void scrollTo(int value) { list().verticalScrollBar()->setValue(value); }

  QPoint middle(const std::string& id) { return list().visualRect(row(id)).center(); }
  void click(const std::string& id) {
    list().scrollTo(row(id));
    QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, middle(id));
    turn();
  }
  /// Puts the keyboard into the list, on this application.
  void standOn(const std::string& id) {
    list().setFocus(Qt::TabFocusReason);
    list().putKeyboardOn(row(id));
  }
  void work(const std::vector<BusyApp>& apps) {
    engine->busyApps().set(apps);
    turn();
  }

  AppsView view{*engine, fakes.ports};
  std::unique_ptr<Window> window;
  QWidget* widget = nullptr;
};

// The window.

TEST_F(AppsWindowTest, HasAFixedSizeATitleAndACloseButton) {
  EXPECT_EQ(widget->size(), QSize(460, 560));
  EXPECT_EQ(widget->minimumSize(), widget->maximumSize());
  EXPECT_TRUE(widget->windowFlags() & Qt::WindowTitleHint);
  EXPECT_TRUE(widget->windowFlags() & Qt::WindowCloseButtonHint);
  EXPECT_FALSE(widget->windowFlags() & Qt::WindowMinimizeButtonHint);
  EXPECT_FALSE(widget->windowFlags() & Qt::WindowMaximizeButtonHint);
}

TEST_F(AppsWindowTest, ClosingHidesItAndOpeningShowsTheSameWindowWithItsSearch) {
  type("xco");
  widget->close();
  EXPECT_FALSE(widget->isVisible());
  open();
  EXPECT_TRUE(widget->isVisible());
  EXPECT_EQ(search().text(), "xco");
  EXPECT_EQ(rows(), Texts{"com.apple.dt.Xcode"});
}

TEST_F(AppsWindowTest, ShowsWhatHappenedWhileItWasClosed) {
  widget->close();
  ignore({"make"});
  engine->busyApps().set({busy("blender", "Blender", 90)});
  fakes.mainLoop.runPosted();
  open();
  EXPECT_EQ(rows().front(), "blender");
  EXPECT_EQ(rows().back(), "make");
}

TEST_F(AppsWindowTest, ControlWClosesIt) {
  press(Qt::Key_W, Qt::ControlModifier);
  EXPECT_FALSE(widget->isVisible());
}

TEST_F(AppsWindowTest, EscapeClearsTheSearchAndThenCloses) {
  type("xcode");
  press(Qt::Key_Escape);
  EXPECT_TRUE(widget->isVisible());
  EXPECT_EQ(search().text(), "");
  EXPECT_EQ(view.search(), "");
  press(Qt::Key_Escape);
  EXPECT_FALSE(widget->isVisible());
}

TEST_F(AppsWindowTest, EscapeWorksFromTheListToo) {
  type("xcode");
  list().setFocus(Qt::TabFocusReason);
  press(Qt::Key_Escape);
  EXPECT_EQ(search().text(), "");
  EXPECT_TRUE(widget->isVisible());
  press(Qt::Key_Escape);
  EXPECT_FALSE(widget->isVisible());
}

// The search.

TEST_F(AppsWindowTest, OpensWithTheKeyboardInTheSearch) {
  EXPECT_EQ(focus(), &search());
}

TEST_F(AppsWindowTest, TypingFiltersAtOnce) {
  type("xcode");
  EXPECT_EQ(view.search(), "xcode");
  EXPECT_EQ(rows(), Texts{"com.apple.dt.Xcode"});
  press(Qt::Key_Backspace);
  EXPECT_EQ(view.search(), "xcod");
}

TEST_F(AppsWindowTest, ShowsTheTextsForEmptyListsWhenNothingIsFound) {
  type("no such application");
  EXPECT_EQ(rows(), Texts{});
  EXPECT_EQ(spoken(0), "Staying awake for, 0");
  EXPECT_EQ(spoken(1), "Nothing is being watched \u2014 your Mac will sleep normally.");
  EXPECT_EQ(spoken(2), "Not watching, 0");
  EXPECT_EQ(spoken(3), "Nothing ignored.");
}

TEST_F(AppsWindowTest, ShowsTheClearButtonOnlyWhileThereIsText) {
  auto* clear = &childOf<windows::SymbolButton>(*widget);
  EXPECT_FALSE(clear->isVisible());
  type("xcode");
  EXPECT_TRUE(clear->isVisible());
  list().setFocus();
  QTest::mouseClick(clear, Qt::LeftButton);
  EXPECT_EQ(view.search(), "");
  EXPECT_FALSE(clear->isVisible());
  EXPECT_EQ(focus(), &search());
}

TEST_F(AppsWindowTest, ControlFGoesToTheSearchAndSelectsIt) {
  type("xcode");
  list().setFocus(Qt::TabFocusReason);
  press(Qt::Key_F, Qt::ControlModifier);
  EXPECT_EQ(focus(), &search());
  EXPECT_EQ(search().selectedText(), "xcode");
}

// Moving applications.

TEST_F(AppsWindowTest, AClickMovesAnApplicationAndAnotherBringsItBack) {
  click("com.apple.dt.Xcode");
  EXPECT_EQ(ignored(), Texts{"com.apple.dt.Xcode"});
  EXPECT_EQ(rows().back(), "com.apple.dt.Xcode");
  click("com.apple.dt.Xcode");
  EXPECT_EQ(ignored(), Texts{});
}

TEST_F(AppsWindowTest, TheEngineDecidesAtOnce) {
  fakes.calls->clear();
  click("com.apple.dt.Xcode");
  EXPECT_FALSE(fakes.calls->only({"list processes"}).empty());
}

TEST_F(AppsWindowTest, TheWholeWidthOfARowReacts) {
  list().scrollTo(row("make"));
  const QRect place = list().visualRect(row("make"));
  QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, place.topLeft() + QPoint(1, 1));
  EXPECT_EQ(ignored(), Texts{"make"});
}

TEST_F(AppsWindowTest, ReleasingTheButtonElsewhereMovesNothing) {
  const QPoint xcode = middle(rows()[0]);
  QTest::mousePress(list().viewport(), Qt::LeftButton, {}, xcode);
  QTest::mouseMove(list().viewport(), middle(rows()[1]));
  QTest::mouseRelease(list().viewport(), Qt::LeftButton, {}, middle(rows()[1]));
  EXPECT_TRUE(view.version() == 0);
}

TEST_F(AppsWindowTest, ASecondClickAtOnceMovesTheApplicationThatStandsThereNow) {
  const Texts before = rows();
  const QPoint second = middle(before[1]);
  QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, second);
  // What the second of two quick clicks sends.
  QTest::mouseEvent(QTest::MouseDClick, list().viewport(), Qt::LeftButton, {}, second);
  QTest::mouseRelease(list().viewport(), Qt::LeftButton, {}, second);
  EXPECT_EQ(std::ranges::count(ignored(), before[1]), 1);
  EXPECT_EQ(std::ranges::count(ignored(), before[2]), 1);
  EXPECT_EQ(ignored().size(), 2U);
}

TEST_F(AppsWindowTest, AHeadingThatIsNotInSightStandsAtTheEdgeAndLeadsToItsSection) {
  const auto heads = childrenOf<windows::SectionHead>(list());
  ASSERT_EQ(heads.size(), 2U);
  const auto visible = [&heads] {
    Texts names;
    for (const auto* head : heads) {
      if (head->isVisible()) names.push_back(head->accessibleName().toStdString());
    }
    return names;
  };
  ASSERT_EQ(visible().size(), 1U);
  EXPECT_EQ(visible()[0].find("Not watching"), 0U);
  heads[1]->click();
  turn();
  ASSERT_EQ(visible().size(), 1U);
  EXPECT_EQ(visible()[0].find("Staying awake for"), 0U);
  heads[0]->click();
  turn();
  EXPECT_EQ(list().verticalScrollBar()->value(), 0);
}

TEST_F(AppsWindowTest, AHeadAtTheEdgeRespondsToTheMouse) {
  auto& head = *childrenOf<windows::SectionHead>(list())[1];
  ASSERT_TRUE(head.isVisible());
  const auto ground = [&head] { return head.grab().toImage().pixelColor(head.width() - 3, 10); };
  const QColor resting = ground();
  head.setAttribute(Qt::WA_UnderMouse);
  const QColor hovered = ground();
  head.setDown(true);
  EXPECT_LT(hovered.lightness(), resting.lightness());
  EXPECT_LT(ground().lightness(), hovered.lightness());
}

TEST_F(AppsWindowTest, TheWheelOverAHeadAtTheEdgeMovesTheList) {
  auto& head = *childrenOf<windows::SectionHead>(list())[1];
  const QPointF middle(head.rect().center());
  QWheelEvent event(middle, head.mapToGlobal(middle), QPoint(), QPoint(0, -120), Qt::NoButton,
                    Qt::NoModifier, Qt::NoScrollPhase, false);
  QCoreApplication::sendEvent(&head, &event);
  EXPECT_GT(list().verticalScrollBar()->value(), 0);
}

TEST_F(AppsWindowTest, TheSearchFieldIsAsHighAsItsTextInEveryStyle) {
  auto& field = childOf<windows::SearchField>(*widget);
  const int high = field.height();
  RoomyStyle roomy;
  search().setStyle(&roomy);
  turn();
  EXPECT_EQ(field.height(), high);
  search().setStyle(nullptr);
}

TEST_F(AppsWindowTest, TheHeadsAtTheEdgesDoNotCoverTheRowOfTheKeyboard) {
  press(Qt::Key_Down);
  const auto heads = childrenOf<windows::SectionHead>(list());
  for (int times = 0; times < 80; ++times) {
    press(times < 60 ? Qt::Key_Down : Qt::Key_Up);
    const QRect row = list().visualRect(list().currentIndex());
    for (const auto* head : heads)
      EXPECT_FALSE(head->isVisible() && head->geometry().intersects(row)) << times;
  }
}

TEST_F(AppsWindowTest, ShowsAMoveFromElsewhereWhileTheEngineIsPaused) {
  engine->setPaused(true);
  turn();
  const Texts before = rows();
  WatchList::setWatched(before[0], false);
  turn();
  EXPECT_NE(rows()[0], before[0]);
}

TEST_F(AppsWindowTest, HeadingsAndOtherButtonsDoNothing) {
  const QPoint heading = list().visualRect(list().model()->index(0, 0)).center();
  QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, heading);
  QTest::mouseClick(list().viewport(), Qt::RightButton, {}, middle(rows()[0]));
  EXPECT_EQ(view.version(), 0);
}

TEST_F(AppsWindowTest, TheFooterSaysHowManyAreIgnoredAndItsButtonTakesAllBack) {
  const auto labels = childrenOf<windows::TextLabel>(*widget);
  const auto says = [&labels](const char* text) {
    return std::ranges::any_of(labels, [text](const auto* label) { return label->text() == text; });
  };
  EXPECT_TRUE(says("Watching everything"));
  EXPECT_FALSE(button().isEnabled());
  click("make");
  click("com.apple.dt.Xcode");
  EXPECT_TRUE(says("2 ignored"));
  EXPECT_TRUE(button().isEnabled());
  QTest::mouseClick(&button(), Qt::LeftButton);
  EXPECT_EQ(ignored(), Texts{});
  EXPECT_TRUE(says("Watching everything"));
  EXPECT_FALSE(button().isEnabled());
}

// The keyboard.

TEST_F(AppsWindowTest, TabGoesFromTheSearchToTheListToTheButton) {
  ignore({"make"});
  widget->close();
  open();
  search().setFocus(Qt::TabFocusReason);
  press(Qt::Key_Tab);
  EXPECT_EQ(focus(), &list());
  EXPECT_EQ(current(), rows().front());
  press(Qt::Key_Tab);
  EXPECT_EQ(focus(), &button());
  press(Qt::Key_Tab);
  EXPECT_EQ(focus(), &search());
}

TEST_F(AppsWindowTest, DownGoesFromTheSearchIntoTheList) {
  press(Qt::Key_Down);
  EXPECT_EQ(focus(), &list());
  EXPECT_EQ(current(), rows().front());
}

TEST_F(AppsWindowTest, ArrowsGoThroughBothSectionsAndPassTheHeadings) {
  ignore({"make"});
  widget->close();
  open();
  standOn("com.apple.dt.Xcode");
  press(Qt::Key_Down);
  EXPECT_EQ(current(), "make");
  press(Qt::Key_Down);
  EXPECT_EQ(current(), "make");
  press(Qt::Key_Up);
  EXPECT_EQ(current(), "com.apple.dt.Xcode");
}

TEST_F(AppsWindowTest, HomeAndEndGoToTheFirstAndTheLastAndShowTheHeading) {
  standOn(rows()[3]);
  press(Qt::Key_End);
  EXPECT_EQ(current(), rows().back());
  EXPECT_GT(scrolled(), 0);
  press(Qt::Key_Home);
  EXPECT_EQ(current(), rows().front());
  EXPECT_EQ(scrolled(), 0);
}

TEST_F(AppsWindowTest, PageDownGoesOnByAboutWhatIsVisible) {
  standOn(rows().front());
  press(Qt::Key_PageDown);
  const int there = list().currentIndex().row();
  EXPECT_GT(there, 5);
  EXPECT_LT(there, list().model()->rowCount() - 5);
  press(Qt::Key_PageUp);
  EXPECT_EQ(current(), rows().front());
}

TEST_F(AppsWindowTest, PageDownAndPageUpPassAHeadingWhereLittleIsVisible) {
  list().setFixedHeight(list().visualRect(row(rows().front())).height() + 4);
  standOn(rows().front());
  for (std::size_t presses = 0; presses < rows().size(); ++presses)
    press(Qt::Key_PageDown);
  EXPECT_EQ(current(), rows().back());
  for (std::size_t presses = 0; presses < rows().size(); ++presses)
    press(Qt::Key_PageUp);
  EXPECT_EQ(current(), rows().front());
}

TEST_F(AppsWindowTest, LettersGoToAnApplicationOfThatName) {
  standOn(rows().front());
  type("xco");
  EXPECT_EQ(current(), "com.apple.dt.Xcode");
}

TEST_F(AppsWindowTest, ReturnAndSpaceMoveARowAndGoOnWithTheNext) {
  const Texts before = rows();
  standOn(before[4]);
  press(Qt::Key_Return);
  EXPECT_EQ(current(), before[5]);
  press(Qt::Key_Space);
  EXPECT_EQ(current(), before[6]);
  press(Qt::Key_Enter, Qt::KeypadModifier);
  EXPECT_EQ(current(), before[7]);
  Texts moved = {before[4], before[5], before[6]};
  std::ranges::sort(moved);
  EXPECT_EQ(ignored(), moved);
  EXPECT_EQ(focus(), &list());
}

TEST_F(AppsWindowTest, AfterTheLastRowOfASectionTheKeyboardGoesBackByOne) {
  ignore({"aider", "make"});
  widget->close();
  open();
  const Texts before = rows();
  standOn(before.back());
  press(Qt::Key_Return);
  EXPECT_EQ(current(), before[before.size() - 2]);
}

TEST_F(AppsWindowTest, AKeyThatIsHeldDownMovesOnlyOneRow) {
  const Texts before = rows();
  standOn(before[0]);
  press(Qt::Key_Return);
  QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, "\r", true);
  QApplication::sendEvent(focus(), &repeated);
  EXPECT_EQ(view.version(), 1);
}

TEST_F(AppsWindowTest, ReturnPressesTheButtonThatHasTheKeyboard) {
  click("make");
  button().setFocus(Qt::TabFocusReason);
  press(Qt::Key_Return);
  EXPECT_EQ(ignored(), Texts{});
}

// Following the engine.

TEST_F(AppsWindowTest, ShowsWhatWorksAtTheTopAsItHappens) {
  work({busy("com.apple.dt.Xcode", "Xcode", 320)});
  EXPECT_EQ(rows().front(), "com.apple.dt.Xcode");
  EXPECT_EQ(spoken(1), "Xcode, watching, working now");
  EXPECT_EQ(spoken(1, Qt::AccessibleDescriptionRole), "320% CPU. Stop staying awake for this");
  work({});
  EXPECT_EQ(rows().back(), "com.apple.dt.Xcode");
}

TEST_F(AppsWindowTest, ARowGrowsByItsSecondLine) {
  const int single = list().visualRect(row("make")).height();
  work({busy("make", "make", 100)});
  EXPECT_GT(list().visualRect(row("make")).height(), single);
  work({});
  EXPECT_EQ(list().visualRect(row("make")).height(), single);
}

TEST_F(AppsWindowTest, KeepsWhatIsOnTheScreenInItsPlace) {
  scrollTo(400);
  const std::string seen = idAt(list().indexAt(QPoint(100, 100)));
  const int before = top(seen);
  work({busy("one", "One", 100), busy("two", "Two", 90)});
  EXPECT_EQ(top(seen), before);
  work({});
  EXPECT_EQ(top(seen), before);
  EXPECT_EQ(scrolled(), 400);
}

TEST_F(AppsWindowTest, DoesNotFollowARowThatGoesToTheTop) {
  scrollTo(400);
  const std::string first = idAt(list().indexAt(QPoint(100, 10)));
  const std::string seen = idAt(list().indexAt(QPoint(100, 150)));
  const int before = top(seen);
  work({busy(first, "A", 100)});
  EXPECT_EQ(rows().front(), first);
  EXPECT_EQ(top(seen), before);
}

TEST_F(AppsWindowTest, StaysAtTheTopWhereNewWorkAppears) {
  work({busy("one", "One", 100)});
  EXPECT_EQ(scrolled(), 0);
  EXPECT_EQ(rows().front(), "one");
}

TEST_F(AppsWindowTest, KeepsTheKeyboardOnItsRow) {
  standOn("make");
  const int before = top("make");
  work({busy("other", "Other", 50)});
  EXPECT_EQ(current(), "make");
  EXPECT_EQ(top("make"), before);
  work({busy("make", "make", 100)});
  EXPECT_EQ(current(), "make");
  EXPECT_EQ(focus(), &list());
  work({});
  EXPECT_EQ(current(), "make");
}

TEST_F(AppsWindowTest, TheKeyboardStaysOnAnApplicationWhenItsRowIsFilteredAway) {
  standOn("make");
  search().setText("xcode");
  EXPECT_EQ(current(), "com.apple.dt.Xcode");
  search().setText("nothing at all");
  EXPECT_EQ(current(), "");
}

TEST_F(AppsWindowTest, TheEngineDoesNotDisturbTyping) {
  type("xc");
  work({busy("com.apple.dt.Xcode", "Xcode", 320)});
  type("ode");
  EXPECT_EQ(search().text(), "xcode");
  EXPECT_EQ(search().cursorPosition(), 5);
}

TEST_F(AppsWindowTest, ChangesNoRowWhenNothingChanged) {
  int changes = 0;
  const auto count = [&changes] { ++changes; };
  QObject::connect(list().model(), &QAbstractItemModel::rowsInserted, widget, count);
  QObject::connect(list().model(), &QAbstractItemModel::rowsRemoved, widget, count);
  QObject::connect(list().model(), &QAbstractItemModel::rowsMoved, widget, count);
  QObject::connect(list().model(), &QAbstractItemModel::dataChanged, widget, count);
  QObject::connect(list().model(), &QAbstractItemModel::modelReset, widget, count);
  work({busy("make", "make", 100)});
  EXPECT_GT(changes, 0);
  changes = 0;
  work({busy("make", "make", 100)});
  EXPECT_EQ(changes, 0);
}

TEST_F(AppsWindowTest, AsksTheViewForNothingWhileItIsClosed) {
  widget->close();
  const Texts before = rows();
  work({busy("one", "One", 100)});
  EXPECT_EQ(rows(), before);
}

// The mouse.

TEST_F(AppsWindowTest, TheRowUnderTheMouseReactsEvenAfterAChange) {
  const Texts before = rows();
  QTest::mouseMove(list().viewport(), middle(before[2]));
  EXPECT_EQ(idAt(list().hovered()), before[2]);
  QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, middle(before[2]));
  EXPECT_EQ(idAt(list().hovered()), before[3]);
}

TEST_F(AppsWindowTest, EveryRowTellsWhatAClickDoes) {
  ignore({"make"});
  widget->close();
  open();
  const auto hint = [this](const char* id) {
    return row(id).data(Qt::ToolTipRole).toString().toStdString();
  };
  EXPECT_EQ(hint("com.apple.dt.Xcode"), "Stop staying awake for this");
  EXPECT_EQ(hint("make"), "Stay awake for this again");
  EXPECT_FALSE(list().model()->index(0, 0).data(Qt::ToolTipRole).isValid());
}

// Screen readers.

TEST_F(AppsWindowTest, EveryLineAndEveryControlHasAName) {
  ignore({"make"});
  widget->close();
  open();
  for (int number = 0; number < list().model()->rowCount(); ++number)
    EXPECT_NE(spoken(number), "") << "line " << number;
  EXPECT_EQ(spoken(0, Qt::AccessibleDescriptionRole), "These can hold your Mac awake");
  const auto name = [](QWidget& control) {
    return QAccessible::queryAccessibleInterface(&control)->text(QAccessible::Name).toStdString();
  };
  EXPECT_EQ(name(*widget), "Choose Apps");
  EXPECT_EQ(name(search()), "Search");
  EXPECT_EQ(name(list()), "Choose Apps");
  EXPECT_EQ(name(button()), "Watch everything");
  EXPECT_EQ(name(childOf<windows::SymbolButton>(*widget)), "Clear search");
}

TEST_F(AppsWindowTest, AScreenReaderReadsTheRowsThroughTheList) {
  work({busy("make", "make", 100)});
  QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(&list());
  ASSERT_NE(interface, nullptr);
  ASSERT_GT(interface->childCount(), 1);
  EXPECT_EQ(interface->child(1)->text(QAccessible::Name), "make, watching, working now");
}

}  // namespace
}  // namespace staylit
