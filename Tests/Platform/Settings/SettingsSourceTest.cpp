#include "Platform/Linux/Settings/SettingsSource.h"

#include <gtest/gtest.h>

#include <chrono>

#include "Tests/Platform/Settings/IntegerValue.h"
#include "Tests/Platform/Settings/SettingsFolder.h"

namespace platform {
namespace {

using SavingState = SettingsSource::Saving::State;
using namespace std::chrono_literals;

/// A source that has read `text`, and doubts a changed file for `settling`.
struct ReadSource {
  ReadSource(std::string_view text, std::chrono::milliseconds settling)
      : source(folder.file(), settling) {
    folder.write(text);
    source.look();
  }

  PendingEdits edited(std::string_view key, tidewell::PropertyValue value) const {
    PendingEdits edits;
    edits.set(key, std::move(value), &source.values());
    return edits;
  }

  SettingsFolder folder;
  SettingsSource source;
};

TEST(SettingsSource, SavesAnEditOfAKeyThatAnEmptiedFileNoLongerHas) {
  ReadSource read("k = 1\n", 0ms);
  const PendingEdits edits = read.edited("k", integer(2));
  read.folder.writeJustNow("");
  EXPECT_EQ(read.source.save(edits).state, SavingState::done);
  EXPECT_EQ(read.folder.read(), "k = 2\n");
}

TEST(SettingsSource, SavesAnEditOfAKeyWhoseLineIsDamagedMeanwhile) {
  ReadSource read("k = 1\n", 0ms);
  const PendingEdits edits = read.edited("k", integer(2));
  read.folder.writeJustNow("k = \n");
  EXPECT_EQ(read.source.save(edits).state, SavingState::done);
  EXPECT_EQ(read.folder.read(), "# k = \nk = 2\n");
}

TEST(SettingsSource, LetsAnotherValueInADamagedFileOverruleAnEdit) {
  ReadSource read("k = 1\n", 0ms);
  const PendingEdits edits = read.edited("k", integer(2));
  read.folder.writeJustNow("k = 3\nx = \n");
  EXPECT_EQ(read.source.save(edits).state, SavingState::done);
  EXPECT_EQ(read.folder.read(), "k = 3\nx = \n");
}

TEST(SettingsSource, LetsAKeyThatWasRemovedFromAWholeFileOverruleAnEdit) {
  ReadSource read("k = 1\nother = 1\n", 0ms);
  const PendingEdits edits = read.edited("k", integer(2));
  read.folder.writeJustNow("other = 1\n");
  EXPECT_EQ(read.source.save(edits).state, SavingState::done);
  EXPECT_EQ(read.folder.read(), "other = 1\n");
}

TEST(SettingsSource, WaitsForAnEditorThatIsStillWritingHoweverLongItWrites) {
  constexpr auto settling = 20ms;
  ReadSource read("k = 1\n", settling);
  std::string halfWay = "k = [";
  const auto begin = std::chrono::steady_clock::now();
  do {
    halfWay += " 1,";
    read.folder.writeJustNow(halfWay);
    read.source.look();
    ASSERT_EQ(read.source.values().at("k"), integer(1)) << halfWay;
  } while (std::chrono::steady_clock::now() - begin < 2 * settling);
}

TEST(SettingsSource, SavesLaterWhileAnotherProcessHoldsTheFolder) {
  ReadSource read("k = 1\n", 0ms);
  const PendingEdits edits = read.edited("k", integer(2));
  {
    const FolderLock held = SettingsFile(read.folder.file()).lock();
    EXPECT_EQ(read.source.save(edits).state, SavingState::later);
  }
  EXPECT_EQ(read.source.save(edits).state, SavingState::done);
}

TEST(SettingsSource, SavesTheOtherEditsWhenOneCannotBeWritten) {
  ReadSource read("a = 1\nk = 1\nz = 1\n", 0ms);
  PendingEdits edits = read.edited("a", integer(2));
  edits.set("k", std::monostate(), &read.source.values());
  edits.set("z", integer(2), &read.source.values());
  EXPECT_EQ(read.source.save(edits).state, SavingState::failed);
  EXPECT_EQ(read.folder.read(), "a = 2\nk = 1\nz = 2\n");
  EXPECT_EQ(read.source.values().at("z"), integer(2));
}

}  // namespace
}  // namespace platform
