#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Tidewell/Ports/Defaults.h"

namespace platform {

/// The contract of every store of settings. A `Store` has an empty store as its `defaults`.
template <typename Store>
class DefaultsContract : public ::testing::Test {
 protected:
  Store store_;
  tidewell::Defaults& defaults_ = store_.defaults;
};

TYPED_TEST_SUITE_P(DefaultsContract);

TYPED_TEST_P(DefaultsContract, AnswersNothingForAKeyThatNobodyKnows) {
  EXPECT_EQ(this->defaults_.integer("k"), 0);
  EXPECT_EQ(this->defaults_.real("k"), 0.0);
  EXPECT_FALSE(this->defaults_.boolean("k"));
  EXPECT_EQ(this->defaults_.stringList("k"), std::nullopt);
}

TYPED_TEST_P(DefaultsContract, AnswersWithTheRegisteredDefaultUntilTheKeyIsSet) {
  this->defaults_.registerDefaults({{"k", std::int64_t{120}}});
  EXPECT_EQ(this->defaults_.integer("k"), 120);
  this->defaults_.setInteger("k", 0);
  EXPECT_EQ(this->defaults_.integer("k"), 0);
}

TYPED_TEST_P(DefaultsContract, AddsToTheRegisteredDefaults) {
  this->defaults_.registerDefaults({{"a", true}, {"b", 1.5}});
  this->defaults_.registerDefaults({{"b", 2.5}});
  EXPECT_TRUE(this->defaults_.boolean("a"));
  EXPECT_EQ(this->defaults_.real("b"), 2.5);
}

TYPED_TEST_P(DefaultsContract, GivesBackWhatWasSet) {
  this->defaults_.setInteger("i", -90);
  this->defaults_.setReal("r", 12.5);
  this->defaults_.setBoolean("b", true);
  this->defaults_.setStringList("l", {"B", "a", "b"});
  EXPECT_EQ(this->defaults_.integer("i"), -90);
  EXPECT_EQ(this->defaults_.real("r"), 12.5);
  EXPECT_TRUE(this->defaults_.boolean("b"));
  EXPECT_EQ(this->defaults_.stringList("l"), (std::vector<std::string>{"B", "a", "b"}));
}

TYPED_TEST_P(DefaultsContract, ConvertsBetweenTypes) {
  this->defaults_.setReal("r", 12.9);
  this->defaults_.setInteger("i", 3);
  this->defaults_.setStringList("l", {});
  EXPECT_EQ(this->defaults_.integer("r"), 12);
  EXPECT_TRUE(this->defaults_.boolean("i"));
  EXPECT_EQ(this->defaults_.real("i"), 3.0);
  EXPECT_EQ(this->defaults_.integer("l"), 0);
  EXPECT_EQ(this->defaults_.stringList("i"), std::nullopt);
}

TYPED_TEST_P(DefaultsContract, KeepsAnEmptyListApartFromNone) {
  this->defaults_.registerDefaults({{"l", std::vector<std::string>{"a"}}});
  this->defaults_.setStringList("l", {});
  EXPECT_EQ(this->defaults_.stringList("l"), std::vector<std::string>{});
}

TYPED_TEST_P(DefaultsContract, AnswersAsBeforeWhenItHasFinishedWriting) {
  this->defaults_.setInteger("i", 5);
  this->defaults_.finishWriting();
  EXPECT_EQ(this->defaults_.integer("i"), 5);
}

REGISTER_TYPED_TEST_SUITE_P(DefaultsContract, AnswersNothingForAKeyThatNobodyKnows,
                            AnswersWithTheRegisteredDefaultUntilTheKeyIsSet,
                            AddsToTheRegisteredDefaults, GivesBackWhatWasSet, ConvertsBetweenTypes,
                            KeepsAnEmptyListApartFromNone, AnswersAsBeforeWhenItHasFinishedWriting);

}  // namespace platform
