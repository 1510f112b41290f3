#include "Platform/Linux/Applications/NamedHolders.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(NamedHolders, GivesEachApplicationANegativeNumberOfItsOwn) {
  NamedHolders holders;
  const auto first = holders.identifierFor("org.a");
  const auto second = holders.identifierFor("org.b");
  EXPECT_LT(first, 0);
  EXPECT_LT(second, 0);
  EXPECT_NE(first, second);
  EXPECT_EQ(holders.applicationId(first), "org.a");
  EXPECT_EQ(holders.applicationId(second), "org.b");
}

TEST(NamedHolders, KeepsAnApplicationsNumber) {
  NamedHolders holders;
  const auto first = holders.identifierFor("org.a");
  holders.identifierFor("org.b");
  EXPECT_EQ(holders.identifierFor("org.a"), first);
}

TEST(NamedHolders, KnowsNoProcess) {
  NamedHolders holders;
  holders.identifierFor("org.a");
  EXPECT_EQ(holders.applicationId(412), std::nullopt);
  EXPECT_EQ(holders.applicationId(-412), std::nullopt);
}

TEST(NamedHolders, ForgetsAllButThoseThatAreKept) {
  NamedHolders holders;
  const auto first = holders.identifierFor("org.a");
  const auto second = holders.identifierFor("org.b");
  holders.keepOnly({second});
  EXPECT_EQ(holders.applicationId(first), std::nullopt);
  EXPECT_EQ(holders.applicationId(second), "org.b");
  EXPECT_NE(holders.identifierFor("org.c"), second);
}

}  // namespace
}  // namespace platform
