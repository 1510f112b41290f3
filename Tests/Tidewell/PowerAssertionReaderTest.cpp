#include "Tidewell/PowerAssertionReader.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "Tests/Fakes/FakePorts.h"
#include "Tidewell/ForeignText.h"

namespace tidewell {
namespace {

using Texts = std::vector<std::string>;

class PowerAssertionReaderTest : public testing::Test {
 protected:
  /// What the reader returns when process 412 holds these assertions.
  Texts readWith(const std::vector<ListedAssertion>& assertions) {
    fakes.assertions.holders = {{412, assertions}};
    return PowerAssertionReader::appsPreventingSleep();
  }

  FakePorts fakes;
};

TEST_F(PowerAssertionReaderTest, ListsNobodyWhenNobodyHoldsAnything) {
  EXPECT_EQ(PowerAssertionReader::appsPreventingSleep(), Texts{});
}

TEST_F(PowerAssertionReaderTest, ListsAHolderAtLevel255) {
  EXPECT_EQ(readWith({{"PreventUserIdleSystemSleep", 255, ""}}), Texts{"pid 412"});
}

TEST_F(PowerAssertionReaderTest, TellsTheFirstDifferentWordsOfAProgram) {
  const auto asks = [](const char* owner, const char* reason) {
    return ListedAssertion{"PreventSystemSleep", 255, reason, owner};
  };
  fakes.assertions.holders = {{412,
                               {asks("Backup tool", "Nightly\nbackup"),
                                asks("Backup tool", "Nightly\nbackup"),
                                {"PreventSystemSleep", 0, "Switched off", "Backup tool"},
                                asks("pid 412", "A reason"),
                                asks("", ""),
                                asks("An owner", ""),
                                asks("One", "too many")}},
                              {413, {asks("", "")}}};
  EXPECT_EQ(PowerAssertionReader::programsPreventingSleep(),
            (std::vector<AskingProgram>{{"pid 412", cleaned("Backup tool: Nightly\nbackup") +
                                                        "; A reason; An owner; 1 more"},
                                        {"pid 413", ""}}));
  EXPECT_EQ(cleaned("Nightly\nbackup").find('\n'), std::string::npos);
}

TEST_F(PowerAssertionReaderTest, LeavesOutAHolderAtLevel0) {
  EXPECT_EQ(readWith({{"PreventUserIdleSystemSleep", 0, ""}}), Texts{});
}

TEST_F(PowerAssertionReaderTest, KnowsTheThreeTypesThatKeepTheMachineAwake) {
  EXPECT_EQ(readWith({{"NoIdleSleepAssertion", 255, ""}}), Texts{"pid 412"});
  EXPECT_EQ(readWith({{"PreventSystemSleep", 255, ""}}), Texts{"pid 412"});
}

TEST_F(PowerAssertionReaderTest, LeavesOutAHolderOfTheDisplayOnly) {
  EXPECT_EQ(readWith({{"PreventUserIdleDisplaySleep", 255, ""}}), Texts{});
}

TEST_F(PowerAssertionReaderTest, ComparesTypesExactly) {
  EXPECT_EQ(readWith({{"preventsystemsleep", 255, ""}}), Texts{});
}

TEST_F(PowerAssertionReaderTest, CountsAnAssertionWithoutALevel) {
  EXPECT_EQ(readWith({{"PreventSystemSleep", std::nullopt, ""}}), Texts{"pid 412"});
}

TEST_F(PowerAssertionReaderTest, CountsAnAssertionWithANegativeLevel) {
  EXPECT_EQ(readWith({{"PreventSystemSleep", -1, ""}}), Texts{"pid 412"});
}

TEST_F(PowerAssertionReaderTest, GoesOnToTheNextAssertionAfterOneThatIsSwitchedOff) {
  EXPECT_EQ(
      readWith({{"PreventUserIdleSystemSleep", 0, ""}, {"PreventUserIdleSystemSleep", 255, ""}}),
      Texts{"pid 412"});
}

TEST_F(PowerAssertionReaderTest, PassesOverAnAssertionWithoutAType) {
  EXPECT_EQ(readWith({}), Texts{});
  EXPECT_EQ(readWith({{"", 255, ""}}), Texts{});
  EXPECT_EQ(readWith({{}, {"PreventSystemSleep", 255, ""}}), Texts{"pid 412"});
}

TEST_F(PowerAssertionReaderTest, LeavesOutThisProcessWhateverItHolds) {
  fakes.assertions.own = 77;
  fakes.assertions.hold(77, "PreventUserIdleSystemSleep");
  fakes.assertions.hold(77, "NoIdleSleepAssertion");
  fakes.assertions.hold(77, "PreventSystemSleep");
  EXPECT_EQ(PowerAssertionReader::appsPreventingSleep(), Texts{});
}

TEST_F(PowerAssertionReaderTest, NamesAnApplicationByItsBundleIdentifier) {
  fakes.assertions.hold(412, "PreventSystemSleep");
  fakes.applications.add(412, "com.example.player", "Player");
  EXPECT_EQ(PowerAssertionReader::appsPreventingSleep(), Texts{"com.example.player"});
}

TEST_F(PowerAssertionReaderTest, NamesAnApplicationWithoutAnIdentifierByItsName) {
  fakes.assertions.hold(412, "PreventSystemSleep");
  fakes.applications.add(412, std::nullopt, "Player");
  EXPECT_EQ(PowerAssertionReader::appsPreventingSleep(), Texts{"Player"});
}

TEST_F(PowerAssertionReaderTest, NamesAProcessWithoutANameByItsNumber) {
  fakes.assertions.hold(412, "PreventSystemSleep");
  EXPECT_EQ(PowerAssertionReader::appsPreventingSleep(), Texts{"pid 412"});
  fakes.applications.add(412, std::nullopt, std::nullopt);
  EXPECT_EQ(PowerAssertionReader::appsPreventingSleep(), Texts{"pid 412"});
}

TEST_F(PowerAssertionReaderTest, ListsTwoProcessesOfOneApplicationOnce) {
  fakes.assertions.hold(10, "PreventSystemSleep");
  fakes.assertions.hold(11, "PreventSystemSleep");
  fakes.applications.add(10, "com.a", "A");
  fakes.applications.add(11, "com.a", "A");
  EXPECT_EQ(PowerAssertionReader::appsPreventingSleep(), Texts{"com.a"});
}

TEST_F(PowerAssertionReaderTest, SortsTheNames) {
  fakes.assertions.hold(7, "PreventSystemSleep");
  fakes.assertions.hold(8, "PreventSystemSleep");
  fakes.assertions.hold(9, "PreventSystemSleep");
  fakes.applications.add(8, "com.b", "B");
  fakes.applications.add(9, "com.a", "A");
  EXPECT_EQ(PowerAssertionReader::appsPreventingSleep(), (Texts{"com.a", "com.b", "pid 7"}));
}

TEST_F(PowerAssertionReaderTest, TruncatesAProcessNumberTo32Bits) {
  fakes.assertions.hold(4294967296 + 412, "PreventSystemSleep");
  EXPECT_EQ(PowerAssertionReader::appsPreventingSleep(), Texts{"pid 412"});
  fakes.assertions.own = 412;
  EXPECT_EQ(PowerAssertionReader::appsPreventingSleep(), Texts{});
}

TEST_F(PowerAssertionReaderTest, ListsNobodyWhenTheServiceDoesNotAnswer) {
  fakes.assertions.hold(412, "PreventSystemSleep");
  fakes.assertions.answers = false;
  EXPECT_EQ(PowerAssertionReader::appsPreventingSleep(), Texts{});
  EXPECT_TRUE(fakes.log.lines().empty());
}

TEST_F(PowerAssertionReaderTest, AsksTheServiceOnceForEachCall) {
  fakes.assertions.hold(412, "PreventSystemSleep");
  fakes.assertions.hold(413, "PreventSystemSleep");
  PowerAssertionReader::appsPreventingSleep();
  EXPECT_EQ(fakes.calls->count("list assertions"), 1U);
}

}  // namespace
}  // namespace tidewell
