#include "Staylit/WatchList.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tests/Fakes/FakePorts.h"

namespace staylit {
namespace {

using Texts = std::vector<std::string>;

class WatchListTest : public testing::Test {
 protected:
  Texts storedIgnored() { return std::get<Texts>(fakes.defaults.stored.at("ignoredApps")); }

  tidewell::FakePorts fakes;
};

TEST_F(WatchListTest, IgnoresAnApplicationOnceHoweverOftenItIsUnwatched) {
  WatchList::setWatched("com.a", false);
  WatchList::setWatched("com.a", false);
  EXPECT_EQ(storedIgnored(), Texts{"com.a"});
}

TEST_F(WatchListTest, WatchesAnIgnoredApplicationAgain) {
  fakes.defaults.stored["ignoredApps"] = Texts{"com.a", "com.b"};
  WatchList::setWatched("com.a", true);
  EXPECT_EQ(storedIgnored(), Texts{"com.b"});
}

TEST_F(WatchListTest, RewritesTheListSortedWhenAWatchedApplicationIsWatched) {
  fakes.defaults.stored["ignoredApps"] = Texts{"b", "B", "a"};
  WatchList::setWatched("com.c", true);
  EXPECT_EQ(storedIgnored(), (Texts{"B", "a", "b"}));
  EXPECT_EQ(fakes.defaults.written, Texts{"ignoredApps"});
}

TEST_F(WatchListTest, KeepsTheListSorted) {
  WatchList::setWatched("b", false);
  WatchList::setWatched("B", false);
  WatchList::setWatched("a", false);
  EXPECT_EQ(storedIgnored(), (Texts{"B", "a", "b"}));
}

TEST_F(WatchListTest, ComparesKeysExactly) {
  fakes.defaults.stored["ignoredApps"] = Texts{"com.a"};
  WatchList::setWatched("COM.A", true);
  EXPECT_EQ(storedIgnored(), Texts{"com.a"});
}

TEST_F(WatchListTest, BeginsAListWhenTheStoredValueIsNotAList) {
  fakes.defaults.stored["ignoredApps"] = true;
  WatchList::setWatched("com.a", false);
  EXPECT_EQ(storedIgnored(), Texts{"com.a"});
}

}  // namespace
}  // namespace staylit
