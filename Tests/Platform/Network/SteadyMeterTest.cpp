#include "Platform/Linux/Network/SteadyMeter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "Platform/Linux/Loop/ThreadQueues.h"
#include "Tests/Fakes/FakeNetworkMeter.h"
#include "Tidewell/NetworkSampler.h"

namespace platform {
namespace {

using namespace std::chrono_literals;
using tidewell::Cancellation;
using tidewell::FakeNetworkMeter;
using tidewell::NetworkTotals;

TEST(SteadyMeter, HandsOverWhatTheOtherMeterMeasures) {
  FakeNetworkMeter meter;
  meter.setTotals({{10, 500}});
  Cancellation cancellation;
  EXPECT_EQ(SteadyMeter(meter).measure(cancellation).totals, (NetworkTotals{{10, 500}}));
  meter.next = {std::nullopt, "no table"};
  EXPECT_EQ(SteadyMeter(meter).measure(cancellation).error, "no table");
}

TEST(SteadyMeter, MeasuresNothingWhenItIsCancelledBeforeOrMeanwhile) {
  FakeNetworkMeter meter;
  SteadyMeter steady(meter, 1h);
  Cancellation cancellation;
  std::jthread canceller([&cancellation] {
    std::this_thread::sleep_for(20ms);
    cancellation.cancel();
  });
  EXPECT_EQ(steady.measure(cancellation).totals, std::nullopt);
  EXPECT_EQ(steady.measure(cancellation).totals, std::nullopt);
  EXPECT_EQ(meter.measurements, 0);
}

TEST(SteadyMeter, WhoAsksAndReadsAtOnceGetsTheMeasurementBefore) {
  FakeNetworkMeter meter;
  meter.setTotals({{10, 1}});
  SteadyMeter steady(meter, 1h);
  ThreadQueues queues;
  tidewell::NetworkSampler sampler(steady, queues);
  sampler.refresh();
  // Even a reader that the scheduler keeps waiting finds nothing newer.
  std::this_thread::sleep_for(50ms);
  EXPECT_TRUE(sampler.currentTotals().empty());
}

}  // namespace
}  // namespace platform
