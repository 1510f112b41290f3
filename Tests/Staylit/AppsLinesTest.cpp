#include "Staylit/AppsLines.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace staylit {

void PrintTo(const AppsLines::Edit& edit, std::ostream* stream) {
  const char* const kinds[] = {"remove", "insert", "move", "change"};
  *stream << kinds[static_cast<int>(edit.kind)] << " " << edit.row << " -> " << edit.movedTo;
}

namespace {

using Edit = AppsLines::Edit;
using Edits = std::vector<Edit>;
using Texts = std::vector<std::string>;

AppsView::Entry app(std::string id, std::optional<std::string> detail = std::nullopt) {
  AppsView::Entry entry;
  entry.name = "The " + id;
  entry.id = std::move(id);
  entry.detail = std::move(detail);
  entry.symbol = "hammer";
  return entry;
}

AppsView::Entry working(std::string id) {
  AppsView::Entry entry = app(std::move(id), "CPU 40%");
  entry.isWorking = true;
  return entry;
}

std::vector<AppsView::Section> lists(std::vector<AppsView::Entry> watched,
                                     std::vector<AppsView::Entry> ignored) {
  return {{"Awake", "They may", "cup", "No one.", "down", "Drop", std::move(watched)},
          {"Asleep", "They may not", "moon", "Nobody.", "up", "Take", std::move(ignored)}};
}

/// Draws lines as a table does, which repeats each step on its own rows.
class Table {
 public:
  Edits show(const std::vector<AppsView::Section>& sections) {
    Edits edits;
    lines.show(sections, [&](const Edit& edit) {
      edits.push_back(edit);
      apply(edit);
      if (edit.kind == Edit::Kind::remove) return;
      // The table reads the line at once.
      const std::size_t row = edit.kind == Edit::Kind::move ? edit.movedTo : edit.row;
      EXPECT_EQ(rows.at(row).text, lines.lines().at(row).text);
    });
    return edits;
  }

  Texts texts() const {
    Texts result;
    for (const AppsLine& row : rows)
      result.push_back(row.text);
    return result;
  }

  AppsLines lines;
  std::vector<AppsLine> rows;

 private:
  auto at(std::size_t row) { return rows.begin() + static_cast<std::ptrdiff_t>(row); }

  void apply(const Edit& edit) {
    switch (edit.kind) {
      case Edit::Kind::remove:
        rows.erase(at(edit.row));
        return;
      case Edit::Kind::insert:
        rows.insert(at(edit.row), lines.lines().at(edit.row));
        return;
      case Edit::Kind::move: {
        const AppsLine moved = rows.at(edit.row);
        rows.erase(at(edit.row));
        rows.insert(at(edit.movedTo), moved);
        return;
      }
      case Edit::Kind::change:
        rows.at(edit.row) = lines.lines().at(edit.row);
        return;
    }
  }
};

// Lines.

TEST(AppsLines, ShowNoCharactersThatNobodyCanRead) {
  const std::string id = "\x1B[2J\x07\u202Etool";
  AppsLines lines;
  lines.show(lists({}, {app(id)}), [](const Edit&) {});
  const AppsLine& line = lines.lines().back();
  EXPECT_EQ(line.text, "The \uFFFD[2J\uFFFD\uFFFDtool");
  EXPECT_EQ(line.id, id) << "as the settings have it, to be found there again";
}

TEST(AppsLines, AreTheHeadingsWithTheApplicationsBelowThem) {
  Table table;
  table.show(lists({app("a"), app("b")}, {app("c")}));
  EXPECT_EQ(table.texts(), (Texts{"Awake", "The a", "The b", "Asleep", "The c"}));
  EXPECT_EQ(table.rows[0].count, 2U);
  EXPECT_EQ(table.rows[0].detail, "They may");
  EXPECT_EQ(table.rows[0].symbol, "cup");
  EXPECT_EQ(table.rows[3].count, 1U);
}

TEST(AppsLines, TellWhichListTheyAreIn) {
  Table table;
  table.show(lists({app("a")}, {app("b"), app("c")}));
  std::vector<std::size_t> sections;
  for (const AppsLine& row : table.rows)
    sections.push_back(row.section);
  EXPECT_EQ(sections, (std::vector<std::size_t>{0, 0, 1, 1, 1}));
}

TEST(AppsLines, ShowTheTextOfAnEmptyList) {
  Table table;
  table.show(lists({}, {}));
  EXPECT_EQ(table.texts(), (Texts{"Awake", "No one.", "Asleep", "Nobody."}));
  EXPECT_EQ(table.rows[1].kind, AppsLine::Kind::empty);
  EXPECT_EQ(table.rows[1].section, 0U);
  EXPECT_EQ(table.rows[2].count, 0U);
}

TEST(AppsLines, ShowHowAnApplicationLeavesItsList) {
  Table table;
  table.show(lists({app("a")}, {app("c", "not in catalogue")}));
  EXPECT_EQ(table.rows[1].moveSymbol, "down");
  EXPECT_EQ(table.rows[1].moveHint, "Drop");
  EXPECT_EQ(table.rows[1].symbol, "hammer");
  EXPECT_EQ(table.rows[1].detail, "");
  EXPECT_EQ(table.rows[3].moveSymbol, "up");
  EXPECT_EQ(table.rows[3].detail, "not in catalogue");
}

TEST(AppsLines, AreSpokenWithEverythingThatTheyShow) {
  Table table;
  table.show(lists({working("a"), app("b")}, {}));
  EXPECT_EQ(table.rows[1].spoken(), "The a, working now, CPU 40%");
  EXPECT_EQ(table.rows[2].spoken(), "The b");
}

TEST(AppsLines, AreSpokenWithTheirList) {
  auto sections = lists({working("a")}, {app("b")});
  sections[0].spokenState = "awake";
  sections[1].spokenState = "asleep";
  Table table;
  table.show(sections);
  EXPECT_EQ(table.rows[1].spokenName(), "The a, awake, working now");
  EXPECT_EQ(table.rows[3].spoken(), "The b, asleep");
}

// Steps.

TEST(AppsLines, TakeNoStepWhenNothingChanged) {
  Table table;
  table.show(lists({app("a")}, {app("c")}));
  EXPECT_EQ(table.show(lists({app("a")}, {app("c")})), Edits{});
}

TEST(AppsLines, ChangeALineWhoseTextsChanged) {
  Table table;
  table.show(lists({app("a"), app("b")}, {}));
  EXPECT_EQ(table.show(lists({app("a"), app("b", "busy")}, {})), (Edits{{Edit::Kind::change, 2}}));
  EXPECT_EQ(table.rows[2].detail, "busy");
}

TEST(AppsLines, MoveALineThatBeganToWork) {
  Table table;
  table.show(lists({app("a"), app("b"), app("c")}, {}));
  EXPECT_EQ(table.show(lists({working("c"), app("a"), app("b")}, {})),
            (Edits{{Edit::Kind::move, 3, 1}, {Edit::Kind::change, 1}}));
  EXPECT_EQ(table.texts(), (Texts{"Awake", "The c", "The a", "The b", "Asleep", "Nobody."}));
}

TEST(AppsLines, MoveALineToTheOtherList) {
  Table table;
  table.show(lists({app("a"), app("b")}, {app("c")}));
  table.show(lists({app("b")}, {app("a"), app("c")}));
  EXPECT_EQ(table.texts(), (Texts{"Awake", "The b", "Asleep", "The a", "The c"}));
  EXPECT_EQ(table.rows[0].count, 1U);
  EXPECT_EQ(table.rows[3].moveSymbol, "up");
}

TEST(AppsLines, RemoveTheLinesThatTheSearchHidesFromTheBottomUp) {
  Table table;
  table.show(lists({app("a"), app("b"), app("c")}, {}));
  EXPECT_EQ(table.show(lists({app("b")}, {})),
            (Edits{{Edit::Kind::remove, 3}, {Edit::Kind::remove, 1}, {Edit::Kind::change, 0}}));
}

TEST(AppsLines, ReachEveryArrangementFromEveryOther) {
  const std::vector<std::vector<AppsView::Section>> arrangements{
      lists({}, {}),
      lists({app("a"), app("b"), app("c")}, {}),
      lists({}, {app("c"), app("b"), app("a")}),
      lists({working("c"), app("a")}, {app("b")}),
      lists({app("d"), app("a")}, {working("b"), app("e")}),
  };
  for (const auto& before : arrangements) {
    for (const auto& after : arrangements) {
      Table table;
      table.show(before);
      table.show(after);
      AppsLines fresh;
      fresh.show(after, [](const Edit&) {});
      EXPECT_EQ(table.rows, fresh.lines());
      EXPECT_EQ(table.lines.lines(), fresh.lines());
    }
  }
}

// Places.

TEST(AppsLines, TellApplicationsFromTheRest) {
  Table table;
  table.show(lists({app("a")}, {}));
  EXPECT_FALSE(table.lines.isEntry(0));
  EXPECT_TRUE(table.lines.isEntry(1));
  EXPECT_FALSE(table.lines.isEntry(3));
  EXPECT_FALSE(table.lines.isEntry(4));
}

TEST(AppsLines, FindAnApplicationWhereverItIs) {
  Table table;
  table.show(lists({app("a")}, {app("b"), app("c")}));
  EXPECT_EQ(table.lines.rowOf("c"), 4U);
  EXPECT_EQ(table.lines.rowOf("Awake"), std::nullopt);
  EXPECT_EQ(table.lines.rowOf(""), std::nullopt);
}

TEST(AppsLines, FindTheNearestApplication) {
  Table table;
  table.show(lists({app("a")}, {app("b")}));
  EXPECT_EQ(table.lines.entryNear(0), 1U);
  EXPECT_EQ(table.lines.entryNear(2), 3U);
  EXPECT_EQ(table.lines.entryNear(4), 3U);
  EXPECT_EQ(table.lines.entryNear(99), 3U);
  table.show(lists({}, {}));
  EXPECT_EQ(table.lines.entryNear(0), std::nullopt);
}

// Anchors.

TEST(AppsAnchors, LeadToTheFirstApplicationThatStayedInItsList) {
  Table table;
  table.show(lists({app("a"), app("b"), app("c")}, {}));
  AppsAnchors anchors;
  anchors.add(table.lines.lines().at(2), 10);
  anchors.add(table.lines.lines().at(3), 50);
  table.show(lists({app("a"), app("new"), app("c")}, {app("b")}));
  const auto place = anchors.firstUnmoved(table.lines);
  ASSERT_TRUE(place);
  EXPECT_EQ(place->row, 3U);
  EXPECT_EQ(place->top, 50);
}

TEST(AppsAnchors, PassOverAnApplicationThatBeganToWork) {
  Table table;
  table.show(lists({app("a"), app("b")}, {}));
  AppsAnchors anchors;
  anchors.add(table.lines.lines().at(2), 10);
  table.show(lists({working("b"), app("a")}, {}));
  EXPECT_FALSE(anchors.firstUnmoved(table.lines));
}

TEST(AppsAnchors, LeadNowhereWhenTheApplicationsAreGone) {
  Table table;
  table.show(lists({app("a")}, {}));
  AppsAnchors anchors;
  anchors.add(table.lines.lines().at(1), 10);
  table.show(lists({}, {}));
  EXPECT_FALSE(anchors.firstUnmoved(table.lines));
}

}  // namespace
}  // namespace staylit
