#include "Tidewell/NetworkSampler.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Tests/Fakes/FakePorts.h"

namespace tidewell {
namespace {

using Texts = std::vector<std::string>;

class NetworkSamplerTest : public testing::Test {
 protected:
  /// Lets one measurement begin and end.
  void measure() {
    sampler->refresh();
    fakes.queues.runAll();
  }

  FakePorts fakes;
  std::unique_ptr<NetworkSampler> sampler =
      std::make_unique<NetworkSampler>(fakes.network, fakes.queues);
};

TEST_F(NetworkSamplerTest, HasNoTotalsBeforeTheFirstMeasurementEnds) {
  fakes.network.setTotals({{123, 1245}});
  EXPECT_EQ(sampler->currentTotals(), NetworkTotals{});
  sampler->refresh();
  EXPECT_EQ(sampler->currentTotals(), NetworkTotals{});
  fakes.queues.runAll();
  EXPECT_EQ(sampler->currentTotals(), (NetworkTotals{{123, 1245}}));
}

TEST_F(NetworkSamplerTest, MeasuresOnItsOwnQueue) {
  EXPECT_EQ(fakes.queues.labels, Texts{"com.staylit.nettop"});
  EXPECT_EQ(fakes.queues.waiting(), 0U);
  sampler->refresh();
  EXPECT_EQ(fakes.network.measurements, 0) << "refreshing returns before anything is measured";
  EXPECT_EQ(fakes.queues.waiting(), 1U);
}

TEST_F(NetworkSamplerTest, DropsARefreshWhileAMeasurementIsScheduled) {
  sampler->refresh();
  sampler->refresh();
  sampler->refresh();
  EXPECT_EQ(fakes.queues.waiting(), 1U);
  fakes.queues.runAll();
  EXPECT_EQ(fakes.network.measurements, 1);
}

TEST_F(NetworkSamplerTest, DropsARefreshWhileItMeasures) {
  fakes.network.whileMeasuring = [this](auto&) { sampler->refresh(); };
  measure();
  EXPECT_EQ(fakes.network.measurements, 1);
  EXPECT_EQ(fakes.queues.waiting(), 0U) << "it is dropped, not queued";
}

TEST_F(NetworkSamplerTest, MeasuresAgainOnceTheMeasurementIsOver) {
  measure();
  measure();
  EXPECT_EQ(fakes.network.measurements, 2);
}

TEST_F(NetworkSamplerTest, KeepsTheEarlierTotalsWhileItMeasures) {
  fakes.network.setTotals({{1, 10}});
  measure();
  NetworkTotals seen;
  fakes.network.setTotals({{1, 20}});
  fakes.network.whileMeasuring = [&](auto&) { seen = sampler->currentTotals(); };
  measure();
  EXPECT_EQ(seen, (NetworkTotals{{1, 10}}));
  EXPECT_EQ(sampler->currentTotals(), (NetworkTotals{{1, 20}}));
}

TEST_F(NetworkSamplerTest, ReplacesTheTotalsAsAWhole) {
  fakes.network.setTotals({{1, 10}, {2, 20}});
  measure();
  fakes.network.setTotals({{2, 30}});
  measure();
  EXPECT_EQ(sampler->currentTotals(), (NetworkTotals{{2, 30}}));
}

TEST_F(NetworkSamplerTest, AMeasurementThatFindsNobodyEmptiesTheTotals) {
  fakes.network.setTotals({{1, 10}});
  measure();
  fakes.network.setTotals({});
  measure();
  EXPECT_EQ(sampler->currentTotals(), NetworkTotals{});
}

TEST_F(NetworkSamplerTest, AFailureIsLoggedOnceAndLeavesTheEarlierTotals) {
  fakes.network.setTotals({{1, 10}});
  measure();
  fakes.network.next = {std::nullopt, "The file doesn\u2019t exist."};
  measure();
  EXPECT_EQ(sampler->currentTotals(), (NetworkTotals{{1, 10}}));
  EXPECT_EQ(fakes.log.lines(),
            Texts{"error: nettop failed to launch: The file doesn\u2019t exist."});
}

TEST_F(NetworkSamplerTest, AFailureWithoutAnErrorIsSilentAndLeavesTheEarlierTotals) {
  fakes.network.setTotals({{1, 10}});
  measure();
  fakes.network.next = {std::nullopt, ""};
  measure();
  EXPECT_EQ(sampler->currentTotals(), (NetworkTotals{{1, 10}}));
  EXPECT_TRUE(fakes.log.lines().empty());
}

TEST_F(NetworkSamplerTest, TriesAgainAfterAFailure) {
  fakes.network.next = {std::nullopt, "no"};
  measure();
  fakes.network.setTotals({{1, 10}});
  measure();
  EXPECT_EQ(fakes.network.measurements, 2);
  EXPECT_EQ(sampler->currentTotals(), (NetworkTotals{{1, 10}}));
}

TEST_F(NetworkSamplerTest, AScheduledMeasurementDoesNothingWhenTheSamplerIsGone) {
  // A queue drops work that has not begun. Here the work begins at that very moment.
  fakes.queues.keepWorkOfDestroyedQueues();
  sampler->refresh();
  sampler.reset();
  ASSERT_EQ(fakes.queues.waiting(), 1U);
  fakes.queues.runAll();
  EXPECT_EQ(fakes.network.measurements, 0);
}

TEST_F(NetworkSamplerTest, CancelsTheMeasurementThatIsUnderWayWhenItIsDestroyed) {
  int cancellations = 0;
  fakes.network.whileMeasuring = [&](Cancellation& cancellation) {
    EXPECT_TRUE(cancellation.onCancel([&] { ++cancellations; }));
    EXPECT_FALSE(cancellation.isCancelled());
    sampler.reset();
    EXPECT_EQ(cancellations, 1);
    EXPECT_TRUE(cancellation.isCancelled());
    EXPECT_FALSE(cancellation.onCancel([&] { ++cancellations; })) << "it is too late";
  };
  measure();
  EXPECT_EQ(cancellations, 1);
}

TEST_F(NetworkSamplerTest, DoesNotCancelAMeasurementThatIsOver) {
  int cancellations = 0;
  fakes.network.whileMeasuring = [&](Cancellation& cancellation) {
    cancellation.onCancel([&] { ++cancellations; });
    cancellation.onCancel(nullptr);
  };
  measure();
  sampler.reset();
  EXPECT_EQ(cancellations, 0);
}

TEST_F(NetworkSamplerTest, DestroysItsQueueWithItself) {
  sampler->refresh();
  sampler.reset();
  EXPECT_EQ(fakes.queues.waiting(), 0U);
}

}  // namespace
}  // namespace tidewell
