#include "Platform/Linux/Network/SocketMeter.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "Tests/Platform/Network/FakeSocketHolders.h"
#include "Tests/Platform/Network/FakeSocketSource.h"
#include "Tests/Platform/Support/TemporaryFolder.h"
#include "Tidewell/Accounting/AccountBook.h"

namespace platform {
namespace {

using namespace std::chrono_literals;

/// The identifier, the bytes received and the bytes sent of each total.
using Rows = std::vector<std::tuple<std::int32_t, std::uint64_t, std::uint64_t>>;

/// Tells once of the closed sockets that the test sets.
class FakeClosedSockets : public ClosedSockets {
 public:
  void take(std::vector<SocketRecord>& taken) override { taken = std::exchange(sockets, {}); }

  std::vector<SocketRecord> sockets;
};

class SocketMeterTest : public ::testing::Test {
 protected:
  SocketMeterTest() {
    setInterfaceBytes(1);
    SocketMeter::Parts parts;
    auto source = std::make_unique<FakeSocketSource>();
    source_ = source.get();
    parts.source = std::move(source);
    auto holders = std::make_unique<FakeSocketHolders>();
    holders_ = holders.get();
    parts.holders = std::move(holders);
    parts.interfaces = std::make_unique<InterfaceCounters>(folder_.path("dev"));
    auto closed = std::make_unique<FakeClosedSockets>();
    closed_ = closed.get();
    parts.closed = std::move(closed);
    parts.accounts = &accounts_;
    parts.now = [this] { return now_; };
    meter_ = std::make_unique<SocketMeter>(std::move(parts));
  }

  void setInterfaceBytes(std::uint64_t bytes) const {
    folder_.write("dev", "lo: " + std::to_string(bytes) + " 0 0 0 0 0 0 0 0 0\n");
  }

  tidewell::NetworkMeasurement measure() { return meter_->measure(cancellation_); }

  /// The totals of a measurement while the interfaces are busy.
  Rows found() {
    setInterfaceBytes(++interfaceBytes_);
    return foundWhileQuiet();
  }

  /// The meter's own totals, which must agree with those that it hands over.
  Rows foundWhileQuiet() {
    const tidewell::NetworkMeasurement measurement = measure();
    EXPECT_EQ(measurement.error, "");
    Rows rows;
    tidewell::NetworkTotals sums;
    for (const SocketTotals::Total& total : meter_->totals()) {
      rows.emplace_back(total.identifier, total.bytesReceived, total.bytesSent);
      sums[total.identifier] = total.bytesReceived + total.bytesSent;
    }
    EXPECT_EQ(measurement.totals, sums);
    return rows;
  }

  testing::TemporaryFolder folder_;
  FakeSocketSource* source_ = nullptr;
  FakeSocketHolders* holders_ = nullptr;
  FakeClosedSockets* closed_ = nullptr;
  tidewell::AccountDirectory accounts_;
  tidewell::Cancellation cancellation_;
  SocketOwners::Time now_{1h};
  std::uint64_t interfaceBytes_ = 1;
  std::unique_ptr<SocketMeter> meter_;
};

TEST_F(SocketMeterTest, FindsEachProcessWithSockets) {
  holders_->processes[7] = {100, 1, {41, 42}};
  holders_->processes[5] = {100, 1, {43}};
  source_->sockets = {{3, 43, 0, 10, 20}, {1, 41, 0, 1, 2}, {2, 42, 0, 100, 200}};
  EXPECT_EQ(found(), (Rows{{5, 10, 20}, {7, 101, 202}}));
}

TEST_F(SocketMeterTest, HandsOverBytesReceivedPlusBytesSent) {
  holders_->processes[7] = {100, 1, {41}};
  source_->sockets = {{1, 41, 0, 1000, 234}};
  EXPECT_EQ(measure().totals, (tidewell::NetworkTotals{{7, 1234}}));
}

TEST_F(SocketMeterTest, FindsNothingWithoutSockets) {
  EXPECT_EQ(found(), Rows{});
}

TEST_F(SocketMeterTest, ListsNothingWhileTheInterfacesStandStill) {
  holders_->processes[7] = {100, 1, {41}};
  source_->sockets = {{1, 41, 0, 1, 2}};
  EXPECT_EQ(foundWhileQuiet(), (Rows{{7, 1, 2}}));
  source_->sockets = {{1, 41, 0, 50, 50}};
  EXPECT_EQ(foundWhileQuiet(), (Rows{{7, 1, 2}}));
  EXPECT_EQ(foundWhileQuiet(), (Rows{{7, 1, 2}}));
  EXPECT_EQ(source_->listings, 1);
  EXPECT_EQ(found(), (Rows{{7, 50, 50}}));
  EXPECT_EQ(source_->listings, 2);
}

TEST_F(SocketMeterTest, ListsEachTimeWhenInterfacesCannotBeRead) {
  folder_.write("dev", "");
  foundWhileQuiet();
  foundWhileQuiet();
  EXPECT_EQ(source_->listings, 2);
}

TEST_F(SocketMeterTest, CountsOnceASocketThatIsListedTwice) {
  holders_->processes[7] = {100, 1, {41}};
  source_->sockets = {{1, 41, 0, 5, 9}, {1, 41, 0, 6, 8}};
  EXPECT_EQ(found(), (Rows{{7, 6, 9}}));
}

TEST_F(SocketMeterTest, KeepsTheBytesOfClosedSocketsWhileTheProcessLives) {
  holders_->processes[7] = {100, 1, {41}};
  source_->sockets = {{1, 41, 0, 5, 5}};
  found();
  source_->sockets = {};
  found();
  found();
  EXPECT_EQ(found(), (Rows{{7, 5, 5}}));
}

TEST_F(SocketMeterTest, DropsAProcessThatHasEnded) {
  holders_->processes[7] = {100, 1, {41}};
  source_->sockets = {{1, 41, 0, 5, 5}};
  found();
  holders_->processes.clear();
  source_->sockets = {};
  EXPECT_EQ(found(), Rows{});
}

TEST_F(SocketMeterTest, BeginsAtZeroForALaterProcessWithTheSameIdentifier) {
  holders_->processes[7] = {100, 40, {41}};
  source_->sockets = {{1, 41, 0, 5, 5}};
  found();
  holders_->processes[7] = {200, 2, {42}};
  source_->sockets = {{2, 42, 0, 3, 3}};
  EXPECT_EQ(found(), (Rows{{7, 3, 3}}));
}

TEST_F(SocketMeterTest, FailsOnceWhenTheTableCannotBeReadAndThenFindsNothing) {
  source_->answer.errorNumber = ENOENT;
  const auto first = measure();
  EXPECT_EQ(first.totals, std::nullopt);
  EXPECT_EQ(first.error, "cannot list sockets: No such file or directory");
  EXPECT_EQ(found(), Rows{});
  EXPECT_EQ(foundWhileQuiet(), Rows{});
}

TEST_F(SocketMeterTest, KeepsTheLastTotalsWhileTheTableCannotBeRead) {
  holders_->processes[7] = {100, 1, {41}};
  source_->sockets = {{1, 41, 0, 5, 5}};
  found();
  source_->answer.errorNumber = ENOMEM;
  setInterfaceBytes(1000);
  EXPECT_EQ(measure().error, "cannot list sockets: Cannot allocate memory");
  EXPECT_EQ(foundWhileQuiet(), (Rows{{7, 5, 5}}));
  source_->answer.errorNumber = 0;
  source_->sockets = {{1, 41, 0, 6, 6}};
  EXPECT_EQ(foundWhileQuiet(), (Rows{{7, 6, 6}}));
}

TEST_F(SocketMeterTest, FailsAgainAfterTheTableCouldBeRead) {
  source_->answer.errorNumber = EPERM;
  EXPECT_NE(measure().error, "");
  EXPECT_EQ(measure().error, "");
  source_->answer.errorNumber = 0;
  EXPECT_EQ(measure().error, "");
  source_->answer.errorNumber = EPERM;
  setInterfaceBytes(1000);
  EXPECT_NE(measure().error, "");
}

TEST_F(SocketMeterTest, ListsAgainAfterAPartialListing) {
  holders_->processes[7] = {100, 1, {41, 42}};
  source_->sockets = {{1, 41, 0, 5, 5}, {2, 42, 0, 1, 1}};
  found();
  source_->sockets = {{1, 41, 0, 8, 8}};
  source_->answer.coverage = Coverage::partial;
  EXPECT_EQ(found(), (Rows{{7, 9, 9}}));
  source_->sockets = {{1, 41, 0, 8, 8}, {2, 42, 0, 2, 2}};
  source_->answer.coverage = Coverage::complete;
  EXPECT_EQ(foundWhileQuiet(), (Rows{{7, 10, 10}}));
}

TEST_F(SocketMeterTest, HasOneTotalForAnAccountAndKeepsItWhenItsProcessesEnd) {
  constexpr std::int32_t kAccount = tidewell::AccountBook::kFirstIdentifier;
  accounts_.assign(7, kAccount);
  holders_->processes[7] = {100, 1, {41}};
  source_->sockets = {{1, 41, 0, 10, 20}};
  EXPECT_EQ(found(), (Rows{{kAccount, 10, 20}}));
  holders_->processes.clear();
  accounts_.noteEnd(7);
  source_->sockets.clear();
  EXPECT_EQ(found(), (Rows{{kAccount, 10, 20}}));
}

TEST_F(SocketMeterTest, CountsTheLastBytesOfAProcessThatEndedWithItsSocket) {
  constexpr std::int32_t kAccount = tidewell::AccountBook::kFirstIdentifier;
  accounts_.assign(7, kAccount);
  holders_->processes[7] = {100, 1, {41}};
  source_->sockets = {{1, 41, 0, 10, 20}};
  found();
  holders_->processes.clear();
  accounts_.noteEnd(7);
  source_->sockets.clear();
  closed_->sockets = {{1, 0, 0, 1000, 25}};
  EXPECT_EQ(found(), (Rows{{kAccount, 1000, 25}}));
}

TEST_F(SocketMeterTest, CountsTheBytesThatAnEndedProcessHadStillToSend) {
  constexpr std::int32_t kAccount = tidewell::AccountBook::kFirstIdentifier;
  accounts_.assign(7, kAccount);
  holders_->processes[7] = {100, 1, {41}};
  source_->sockets = {{1, 41, 0, 10, 20}};
  found();
  holders_->processes.clear();
  accounts_.noteEnd(7);
  source_->sockets = {{1, 0, 0, 10, 90}};
  EXPECT_EQ(found(), (Rows{{kAccount, 10, 90}}));
}

TEST_F(SocketMeterTest, CountsClosedSocketsEvenWhileTheInterfacesAreQuiet) {
  holders_->processes[7] = {100, 1, {41}};
  source_->sockets = {{1, 41, 0, 10, 20}};
  found();
  closed_->sockets = {{1, 0, 0, 1000, 25}};
  EXPECT_EQ(foundWhileQuiet(), (Rows{{7, 1000, 25}}));
}

TEST_F(SocketMeterTest, ListsAgainWhileBytesWaitToBeRead) {
  holders_->processes[7] = {100, 1, {41}};
  source_->sockets = {{1, 41, 0, 10, 20, true}};
  found();
  source_->sockets = {{1, 41, 0, 500, 20, false}};
  EXPECT_EQ(foundWhileQuiet(), (Rows{{7, 500, 20}}));
  const int listings = source_->listings;
  foundWhileQuiet();
  EXPECT_EQ(source_->listings, listings);
}

TEST_F(SocketMeterTest, SurvivesTheLateEndOfASocketWhoseOwnerIsLongGone) {
  holders_->processes[5] = {100, 1, {43}};
  holders_->processes[7] = {100, 1, {41}};
  source_->sockets = {{1, 41, 0, 10, 20}, {3, 43, 0, 1, 2}};
  found();
  holders_->processes.erase(7);
  source_->sockets = {{1, 0, 0, 10, 20}, {3, 43, 0, 1, 2}};
  found();
  closed_->sockets = {{1, 0, 0, 99, 99}};
  EXPECT_EQ(found(), (Rows{{5, 1, 2}}));
  closed_->sockets = {{1, 0, 0, 100, 100}};
  EXPECT_EQ(foundWhileQuiet(), (Rows{{5, 1, 2}}));
}

}  // namespace
}  // namespace platform
