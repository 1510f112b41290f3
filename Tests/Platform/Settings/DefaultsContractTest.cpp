// What every store of settings promises, asked of the one in memory and of the one on disk.

#include <gtest/gtest.h>

#include <memory>

#include "Tests/Fakes/FakeDefaults.h"
#include "Tests/Platform/Settings/SettingsFolder.h"

namespace platform {
namespace {

using Texts = std::vector<std::string>;

struct FakeStore {
  tidewell::FakeDefaults defaults;
};

struct TomlStore {
  SettingsFolder folder;
  TomlDefaults defaults{folder.file()};
};

template <typename Store>
class DefaultsContract : public testing::Test {
 protected:
  Store store_;
  tidewell::Defaults& defaults_ = store_.defaults;
};

using Stores = testing::Types<FakeStore, TomlStore>;
TYPED_TEST_SUITE(DefaultsContract, Stores);

TYPED_TEST(DefaultsContract, AnswersNothingForAKeyThatNobodyKnows) {
  EXPECT_EQ(this->defaults_.integer("k"), 0);
  EXPECT_EQ(this->defaults_.real("k"), 0.0);
  EXPECT_FALSE(this->defaults_.boolean("k"));
  EXPECT_EQ(this->defaults_.stringList("k"), std::nullopt);
}

TYPED_TEST(DefaultsContract, AnswersWithTheRegisteredDefaultUntilTheKeyIsSet) {
  this->defaults_.registerDefaults({{"k", std::int64_t{120}}});
  EXPECT_EQ(this->defaults_.integer("k"), 120);
  this->defaults_.setInteger("k", 0);
  EXPECT_EQ(this->defaults_.integer("k"), 0);
}

TYPED_TEST(DefaultsContract, AddsToTheRegisteredDefaults) {
  this->defaults_.registerDefaults({{"a", true}, {"b", 1.5}});
  this->defaults_.registerDefaults({{"b", 2.5}});
  EXPECT_TRUE(this->defaults_.boolean("a"));
  EXPECT_EQ(this->defaults_.real("b"), 2.5);
}

TYPED_TEST(DefaultsContract, GivesBackWhatWasSet) {
  this->defaults_.setInteger("i", -90);
  this->defaults_.setReal("r", 12.5);
  this->defaults_.setBoolean("b", true);
  this->defaults_.setStringList("l", {"B", "a", "b"});
  EXPECT_EQ(this->defaults_.integer("i"), -90);
  EXPECT_EQ(this->defaults_.real("r"), 12.5);
  EXPECT_TRUE(this->defaults_.boolean("b"));
  EXPECT_EQ(this->defaults_.stringList("l"), (Texts{"B", "a", "b"}));
}

TYPED_TEST(DefaultsContract, ConvertsBetweenTypes) {
  this->defaults_.setReal("r", 12.9);
  this->defaults_.setInteger("i", 3);
  this->defaults_.setStringList("l", {});
  EXPECT_EQ(this->defaults_.integer("r"), 12);
  EXPECT_TRUE(this->defaults_.boolean("i"));
  EXPECT_EQ(this->defaults_.real("i"), 3.0);
  EXPECT_EQ(this->defaults_.integer("l"), 0);
  EXPECT_EQ(this->defaults_.stringList("i"), std::nullopt);
}

TYPED_TEST(DefaultsContract, KeepsAnEmptyListApartFromNone) {
  this->defaults_.registerDefaults({{"l", Texts{"a"}}});
  this->defaults_.setStringList("l", {});
  EXPECT_EQ(this->defaults_.stringList("l"), Texts{});
}

}  // namespace
}  // namespace platform
