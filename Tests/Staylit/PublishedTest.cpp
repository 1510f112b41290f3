#include "Staylit/Published.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace staylit {
namespace {

using Values = std::vector<int>;

TEST(Published, HasItsInitialValue) {
  const Published<std::string> property("first");
  EXPECT_EQ(property.get(), "first");
}

TEST(Published, TellsItsObserversOfEveryAssignment) {
  Published<int> property(1);
  Values told;
  const Subscription subscription = property.observe([&](int next) { told.push_back(next); });
  EXPECT_EQ(told, Values{}) << "subscribing is no assignment";
  property.set(2);
  property.set(3);
  EXPECT_EQ(told, (Values{2, 3}));
  EXPECT_EQ(property.get(), 3);
}

TEST(Published, TellsThemBeforeTheValueChanges) {
  Published<int> property(1);
  Values seen;
  const Subscription subscription = property.observe([&](int) { seen.push_back(property.get()); });
  property.set(2);
  property.set(3);
  EXPECT_EQ(seen, (Values{1, 2}));
}

TEST(Published, TellsThemAlsoWhenTheValueStaysTheSame) {
  Published<int> property(1);
  int times = 0;
  const Subscription subscription = property.observe([&](int) { ++times; });
  property.set(1);
  property.set(1);
  EXPECT_EQ(times, 2);
}

TEST(Published, TellsSeveralObserversInTheOrderTheyCame) {
  Published<int> property(0);
  Values order;
  const Subscription first = property.observe([&](int) { order.push_back(1); });
  const Subscription second = property.observe([&](int) { order.push_back(2); });
  property.set(1);
  EXPECT_EQ(order, (Values{1, 2}));
}

TEST(Published, TellsNobodyWhoseSubscriptionIsDropped) {
  Published<int> property(0);
  Values told;
  Subscription dropped = property.observe([&](int) { told.push_back(1); });
  const Subscription kept = property.observe([&](int) { told.push_back(2); });
  dropped = Subscription();
  property.set(1);
  EXPECT_EQ(told, Values{2});
}

TEST(Published, LetsAnObserverDropItsOwnSubscriptionWhileItIsTold) {
  Published<int> property(0);
  int times = 0;
  Subscription own;
  own = property.observe([&](int) {
    own = Subscription();
    ++times;
  });
  property.set(1);
  property.set(2);
  EXPECT_EQ(times, 1);
  EXPECT_EQ(property.get(), 2);
}

TEST(Published, DoesNotTellAnObserverThatAnEarlierOneDropped) {
  Published<int> property(0);
  int times = 0;
  Subscription later;
  const Subscription earlier = property.observe([&](int) { later = Subscription(); });
  later = property.observe([&](int) { ++times; });
  property.set(1);
  EXPECT_EQ(times, 0);
}

TEST(Published, LetsAnObserverAddAnotherWhileItIsTold) {
  Published<int> property(0);
  Values told;
  std::vector<Subscription> added;
  const Subscription subscription = property.observe([&](int) {
    if (added.empty()) added.push_back(property.observe([&](int next) { told.push_back(next); }));
  });
  property.set(1);
  property.set(2);
  EXPECT_EQ(told, Values{2}) << "told from the next assignment on";
}

TEST(Published, MayBeDestroyedBeforeItsSubscriptions) {
  const auto captured = std::make_shared<int>(0);
  Subscription subscription;
  {
    Published<int> property(0);
    subscription = property.observe([captured](int) { ++*captured; });
    property.set(1);
  }
  EXPECT_EQ(*captured, 1);
  EXPECT_EQ(captured.use_count(), 2);
  subscription = Subscription();
  EXPECT_EQ(captured.use_count(), 1);
}

}  // namespace
}  // namespace staylit
