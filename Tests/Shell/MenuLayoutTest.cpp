#include "Staylit/Desktop/Menu/MenuLayout.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "Tests/Shell/Support/FakeMenu.h"

namespace staylit {
namespace {

using testing::appItem;
using testing::command;
using testing::header;
using testing::separator;
using testing::smallMenu;
using Action = MenuItem::Action;

std::int32_t idOf(const MenuLayout& layout, const std::string& title) {
  for (const MenuLayout::Entry& entry : layout.entries()) {
    if (entry.item.title == title) return entry.id;
  }
  return -1;
}

TEST(MenuLayout, IsEmptyAndOfRevisionZeroBeforeTheFirstUpdate) {
  const MenuLayout layout;
  EXPECT_TRUE(layout.entries().empty());
  EXPECT_EQ(layout.revision(), 0U);
}

TEST(MenuLayout, KeepsItsRevisionAsLongAsTheItemsAreTheSame) {
  MenuLayout layout;
  EXPECT_TRUE(layout.update(smallMenu()).isLayout);
  EXPECT_EQ(layout.revision(), 1U);
  EXPECT_FALSE(layout.update(smallMenu()));
  EXPECT_EQ(layout.revision(), 1U);
}

TEST(MenuLayout, TellsOfAnEmptyMenuAsOfALayout) {
  MenuLayout layout;
  EXPECT_TRUE(layout.update({}).isLayout);
  EXPECT_EQ(layout.revision(), 1U);
}

TEST(MenuLayout, TellsOfAChangedPropertyWithoutANewRevision) {
  MenuLayout layout;
  layout.update(smallMenu());
  Menu menu = smallMenu();
  menu[2].title = "Aider — 70% CPU";
  const MenuLayout::Change change = layout.update(menu);
  EXPECT_FALSE(change.isLayout);
  ASSERT_EQ(change.items.size(), 1U);
  EXPECT_EQ(change.items[0].id, idOf(layout, "Aider — 70% CPU"));
  EXPECT_EQ(change.items[0].updated, (MenuProperties{{"label", std::string("Aider — 70% CPU")}}));
  EXPECT_EQ(layout.revision(), 1U);
}

TEST(MenuLayout, TellsOfAPropertyThatFellBackToItsDefault) {
  MenuLayout layout;
  Menu menu{header("Idle"), command("Pause", "p", Action::togglePause)};
  menu[1].isEnabled = false;
  layout.update(menu);
  menu[1].isEnabled = true;
  const MenuLayout::Change change = layout.update(menu);
  ASSERT_EQ(change.items.size(), 1U);
  EXPECT_TRUE(change.items[0].updated.empty());
  ASSERT_EQ(change.items[0].removed.size(), 1U);
  EXPECT_STREQ(change.items[0].removed[0], "enabled");
}

TEST(MenuLayout, RecognisesAnItemByItsActionAndNotByItsText) {
  MenuLayout layout;
  layout.update({header("Idle"), command("Pause", "p", Action::togglePause)});
  const std::int32_t pause = idOf(layout, "Pause");
  layout.update({header("Paused"), command("Resume", "p", Action::togglePause)});
  EXPECT_EQ(idOf(layout, "Resume"), pause);
  EXPECT_EQ(layout.revision(), 1U);
}

TEST(MenuLayout, GivesEachItemOfAMenuANumberOfItsOwn) {
  MenuLayout layout;
  layout.update({header("x"), header("x"), separator(), separator(), appItem("x", "x", true),
                 appItem("x", "x", false), header("")});
  std::set<std::int32_t> ids;
  for (const MenuLayout::Entry& entry : layout.entries())
    ids.insert(entry.id);
  EXPECT_EQ(ids.size(), 7U);
  EXPECT_FALSE(ids.contains(MenuLayout::kRoot));
}

TEST(MenuLayout, KeepsASeparatorBeforeItsItem) {
  MenuLayout layout;
  Menu menu = testing::smallMenu();
  layout.update(menu);
  const std::int32_t beforePause = layout.entries()[3].id;
  const std::int32_t beforeApp = layout.entries()[1].id;
  menu.erase(menu.begin() + 1, menu.begin() + 3);
  layout.update(menu);
  EXPECT_EQ(layout.entries()[1].id, beforePause);
  layout.update(testing::smallMenu());
  EXPECT_EQ(layout.entries()[1].id, beforeApp);
  EXPECT_EQ(layout.entries()[3].id, beforePause);
}

TEST(MenuLayout, NeverGivesTheNumberOfAnEarlierItemToAnotherOne) {
  MenuLayout layout;
  layout.update({header("Idle"), appItem("A", "a", true)});
  const std::int32_t a = idOf(layout, "A");
  layout.update({header("Idle"), appItem("B", "b", true)});
  EXPECT_NE(idOf(layout, "B"), a);
  EXPECT_EQ(layout.find(a), nullptr);
  ASSERT_NE(layout.recall(a), nullptr);
  EXPECT_EQ(layout.recall(a)->representedObject, "a");
}

TEST(MenuLayout, GivesAnItemThatComesBackItsOldNumber) {
  MenuLayout layout;
  layout.update({header("Idle"), appItem("A", "a", true)});
  const std::int32_t a = idOf(layout, "A");
  layout.update({header("Idle")});
  layout.update({header("Idle"), appItem("B", "b", true), appItem("A", "a", true)});
  EXPECT_EQ(idOf(layout, "A"), a);
  EXPECT_EQ(layout.revision(), 3U);
}

TEST(MenuLayout, ForgetsItemsThatLeftLongAgoAndGivesNoNumberTwice) {
  MenuLayout layout;
  std::set<std::int32_t> given;
  for (int round = 0; round < 1000; ++round) {
    const std::string id = "app" + std::to_string(round);
    layout.update({header("Idle"), appItem(id, id, true)});
    EXPECT_TRUE(given.insert(idOf(layout, id)).second);
  }
  EXPECT_EQ(layout.recall(*given.begin()), nullptr);
  EXPECT_NE(layout.recall(*given.rbegin()), nullptr);
  EXPECT_EQ(layout.revision(), 1000U);
}

TEST(MenuProperties, AreOnlyThoseThatDifferFromTheDefaults) {
  EXPECT_EQ(menuProperties(command("Pause", "p", Action::togglePause)),
            (MenuProperties{{"label", std::string("Pause")},
                            {"shortcut", MenuShortcut{"Control", "p"}}}));
  EXPECT_EQ(menuProperties(separator()), (MenuProperties{{"type", std::string("separator")}}));
  EXPECT_EQ(menuProperties(header("Idle")),
            (MenuProperties{{"label", std::string("Idle")}, {"enabled", false}}));
}

TEST(MenuProperties, HaveTheirUnderscoresDoubledSoThatNoneBecomesAnAccessKey) {
  EXPECT_EQ(menuProperties(header("_my__tool"))[0].value,
            MenuPropertyValue(std::string("__my____tool")));
}

TEST(MenuProperties, HaveTheirLabelCutWhereNoPanelCouldShowMore) {
  MenuItem item;
  item.title = std::string(10'000, 'x');
  EXPECT_EQ(menuProperties(item)[0].value, MenuPropertyValue(std::string(200, 'x') + "…"));
}

TEST(MenuProperties, AreFitForTheBusWhateverAProcessCallsItself) {
  EXPECT_EQ(menuProperties(header("a\xff\nb"))[0].value,
            MenuPropertyValue(std::string("a\uFFFD\uFFFDb")));
}

}  // namespace
}  // namespace staylit
