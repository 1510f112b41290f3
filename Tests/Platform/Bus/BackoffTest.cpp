#include "Platform/Linux/Bus/Backoff.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>

namespace platform {
namespace {

using std::chrono::seconds;

class BackoffTest : public ::testing::Test {
 protected:
  static BusTiming::Point at(int second) { return BusTiming::Point(seconds(1000 + second)); }

  Backoff backoff{seconds(2), seconds(60)};
};

TEST_F(BackoffTest, LetsEverythingThroughAtFirst) {
  EXPECT_EQ(backoff.remembered(at(0)), 0);
}

TEST_F(BackoffTest, RemembersTheErrorForTwoSecondsAfterAFirstFailure) {
  backoff.failed(-ETIMEDOUT, at(0));
  EXPECT_EQ(backoff.remembered(at(0)), -ETIMEDOUT);
  EXPECT_EQ(backoff.remembered(at(1)), -ETIMEDOUT);
  EXPECT_EQ(backoff.remembered(at(2)), 0);
}

TEST_F(BackoffTest, DoublesThePauseWithEveryFailureUpToAMinute) {
  int now = 0;
  for (const int pause : {2, 4, 8, 16, 32, 60, 60}) {
    backoff.failed(-ENOENT, at(now));
    EXPECT_EQ(backoff.remaining(at(now)), seconds(pause));
    now += pause;
    EXPECT_EQ(backoff.remembered(at(now)), 0);
  }
}

TEST_F(BackoffTest, BeginsAnewAfterASuccess) {
  backoff.failed(-ENOENT, at(0));
  backoff.failed(-ENOENT, at(2));
  backoff.succeeded();
  EXPECT_EQ(backoff.remembered(at(2)), 0);
  backoff.failed(-ECONNREFUSED, at(3));
  EXPECT_EQ(backoff.remembered(at(4)), -ECONNREFUSED);
  EXPECT_EQ(backoff.remaining(at(3)), seconds(2));
}

}  // namespace
}  // namespace platform
