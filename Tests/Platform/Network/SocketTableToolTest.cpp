#include "Platform/Linux/Network/SocketTableTool.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Tests/Platform/Network/FakeSocketHolders.h"
#include "Tests/Platform/Network/FakeSocketSource.h"
#include "Tests/Platform/Tasks/TemporaryFolder.h"
#include "Tidewell/Accounting/AccountBook.h"
#include "Tidewell/NetworkSampler.h"

namespace platform {
namespace {

using namespace std::chrono_literals;

/// Tells what the test sets, once.
class FakeClosedSockets : public ClosedSockets {
 public:
  void take(std::vector<SocketRecord>& taken) override { taken = std::exchange(sockets, {}); }

  std::vector<SocketRecord> sockets;
};

class SocketTableToolTest : public ::testing::Test {
 protected:
  SocketTableToolTest() {
    setInterfaceBytes(1);
    SocketTableTool::Parts parts;
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
    tool_ = std::make_unique<SocketTableTool>(std::move(parts));
  }

  void setInterfaceBytes(std::uint64_t bytes) const {
    folder_.write("dev", "lo: " + std::to_string(bytes) + " 0 0 0 0 0 0 0 0 0\n");
  }

  tidewell::TaskLauncher::Launch launch() { return tool_->launch("/usr/bin/nettop", {"-P"}); }

  /// The output of a run while the interfaces are busy.
  std::string output() {
    setInterfaceBytes(++interfaceBytes_);
    return outputWhileQuiet();
  }

  std::string outputWhileQuiet() {
    const auto launched = launch();
    EXPECT_EQ(launched.error, "");
    return launched.task ? launched.task->readToEnd(1'000'000).value_or("too long") : "failed";
  }

  TemporaryFolder folder_;
  FakeSocketSource* source_ = nullptr;
  FakeSocketHolders* holders_ = nullptr;
  FakeClosedSockets* closed_ = nullptr;
  tidewell::AccountDirectory accounts_;
  SocketOwners::Time now_{1h};
  std::uint64_t interfaceBytes_ = 1;
  std::unique_ptr<SocketTableTool> tool_;
};

TEST_F(SocketTableToolTest, PrintsALineForEachProcessWithSockets) {
  holders_->processes[7] = {100, "curl", 1, {41, 42}};
  holders_->processes[5] = {100, "sshd", 1, {43}};
  source_->sockets = {{3, 43, 0, 10, 20}, {1, 41, 0, 1, 2}, {2, 42, 0, 100, 200}};
  EXPECT_EQ(output(), "sshd.5,10,20,\ncurl.7,101,202,\n");
}

TEST_F(SocketTableToolTest, PrintsLinesThatTheSamplerUnderstands) {
  holders_->processes[7] = {100, "a,b.c\n9", 1, {41}};
  source_->sockets = {{1, 41, 0, 1000, 234}};
  EXPECT_EQ(tidewell::NetworkSampler::parse(output()), (tidewell::NetworkTotals{{7, 1234}}));
}

TEST_F(SocketTableToolTest, PrintsNothingWhereThereAreNoSockets) {
  EXPECT_EQ(output(), "");
}

TEST_F(SocketTableToolTest, GivesATaskThatHasEnded) {
  const auto launched = launch();
  ASSERT_NE(launched.task, nullptr);
  EXPECT_FALSE(launched.task->isRunning());
  launched.task->terminate();
  EXPECT_EQ(launched.task->readToEnd(0), "");
}

TEST_F(SocketTableToolTest, KeepsToTheLimitOfTheReader) {
  holders_->processes[7] = {100, "x", 1, {41}};
  source_->sockets = {{1, 41, 0, 1, 2}};
  EXPECT_EQ(launch().task->readToEnd(8), std::nullopt);
  EXPECT_EQ(launch().task->readToEnd(9), "x.7,1,2,\n");
}

TEST_F(SocketTableToolTest, ListsNothingWhileTheInterfacesStandStill) {
  holders_->processes[7] = {100, "curl", 1, {41}};
  source_->sockets = {{1, 41, 0, 1, 2}};
  EXPECT_EQ(outputWhileQuiet(), "curl.7,1,2,\n");
  source_->sockets = {{1, 41, 0, 50, 50}};
  EXPECT_EQ(outputWhileQuiet(), "curl.7,1,2,\n");
  EXPECT_EQ(outputWhileQuiet(), "curl.7,1,2,\n");
  EXPECT_EQ(source_->listings, 1);
  EXPECT_EQ(output(), "curl.7,50,50,\n");
  EXPECT_EQ(source_->listings, 2);
}

TEST_F(SocketTableToolTest, ListsEachTimeWhereInterfacesCannotBeRead) {
  folder_.write("dev", "");
  outputWhileQuiet();
  outputWhileQuiet();
  EXPECT_EQ(source_->listings, 2);
}

TEST_F(SocketTableToolTest, CountsASocketOnceThatIsListedTwice) {
  holders_->processes[7] = {100, "curl", 1, {41}};
  source_->sockets = {{1, 41, 0, 5, 9}, {1, 41, 0, 6, 8}};
  EXPECT_EQ(output(), "curl.7,6,9,\n");
}

TEST_F(SocketTableToolTest, KeepsTheBytesOfClosedSocketsWhileTheProcessLives) {
  holders_->processes[7] = {100, "curl", 1, {41}};
  source_->sockets = {{1, 41, 0, 5, 5}};
  output();
  source_->sockets = {};
  output();
  output();
  EXPECT_EQ(output(), "curl.7,5,5,\n");
}

TEST_F(SocketTableToolTest, DropsAProcessThatHasEnded) {
  holders_->processes[7] = {100, "curl", 1, {41}};
  source_->sockets = {{1, 41, 0, 5, 5}};
  output();
  holders_->processes.clear();
  source_->sockets = {};
  EXPECT_EQ(output(), "");
}

TEST_F(SocketTableToolTest, BeginsAtZeroForALaterProcessOfTheSameIdentifier) {
  holders_->processes[7] = {100, "curl", 40, {41}};
  source_->sockets = {{1, 41, 0, 5, 5}};
  output();
  holders_->processes[7] = {200, "wget", 2, {42}};
  source_->sockets = {{2, 42, 0, 3, 3}};
  EXPECT_EQ(output(), "wget.7,3,3,\n");
}

TEST_F(SocketTableToolTest, FailsOnceWhereTheTableCannotBeReadAndThenYieldsNothing) {
  source_->answer.errorNumber = ENOENT;
  const auto first = launch();
  EXPECT_EQ(first.task, nullptr);
  EXPECT_EQ(first.error, "cannot list sockets: No such file or directory");
  EXPECT_EQ(output(), "");
  EXPECT_EQ(outputWhileQuiet(), "");
}

TEST_F(SocketTableToolTest, KeepsTheLastOutputWhileTheTableCannotBeRead) {
  holders_->processes[7] = {100, "curl", 1, {41}};
  source_->sockets = {{1, 41, 0, 5, 5}};
  output();
  source_->answer.errorNumber = ENOMEM;
  setInterfaceBytes(1000);
  EXPECT_EQ(launch().error, "cannot list sockets: Cannot allocate memory");
  EXPECT_EQ(outputWhileQuiet(), "curl.7,5,5,\n");
  source_->answer.errorNumber = 0;
  source_->sockets = {{1, 41, 0, 6, 6}};
  EXPECT_EQ(outputWhileQuiet(), "curl.7,6,6,\n");
}

TEST_F(SocketTableToolTest, FailsAgainAfterTheTableCouldBeRead) {
  source_->answer.errorNumber = EPERM;
  EXPECT_NE(launch().error, "");
  EXPECT_EQ(launch().error, "");
  source_->answer.errorNumber = 0;
  EXPECT_EQ(launch().error, "");
  source_->answer.errorNumber = EPERM;
  setInterfaceBytes(1000);
  EXPECT_NE(launch().error, "");
}

TEST_F(SocketTableToolTest, ListsAgainAfterAPartialListing) {
  holders_->processes[7] = {100, "curl", 1, {41, 42}};
  source_->sockets = {{1, 41, 0, 5, 5}, {2, 42, 0, 1, 1}};
  output();
  source_->sockets = {{1, 41, 0, 8, 8}};
  source_->answer.coverage = Coverage::partial;
  EXPECT_EQ(output(), "curl.7,9,9,\n");
  source_->sockets = {{1, 41, 0, 8, 8}, {2, 42, 0, 2, 2}};
  source_->answer.coverage = Coverage::complete;
  EXPECT_EQ(outputWhileQuiet(), "curl.7,10,10,\n");
}

TEST_F(SocketTableToolTest, PrintsOneLineForAnAccountAndKeepsItWhenItsProcessesEnd) {
  constexpr std::int32_t kAccount = tidewell::AccountBook::kFirstIdentifier;
  accounts_.assign(7, kAccount);
  holders_->processes[7] = {100, "curl", 1, {41}};
  source_->sockets = {{1, 41, 0, 10, 20}};
  EXPECT_EQ(output(), "account.1073741824,10,20,\n");
  holders_->processes.clear();
  accounts_.noteEnd(7);
  source_->sockets.clear();
  EXPECT_EQ(output(), "account.1073741824,10,20,\n");
}

TEST_F(SocketTableToolTest, CountsTheLastBytesOfAProcessThatEndedWithItsSocket) {
  constexpr std::int32_t kAccount = tidewell::AccountBook::kFirstIdentifier;
  accounts_.assign(7, kAccount);
  holders_->processes[7] = {100, "curl", 1, {41}};
  source_->sockets = {{1, 41, 0, 10, 20}};
  output();
  holders_->processes.clear();
  accounts_.noteEnd(7);
  source_->sockets.clear();
  closed_->sockets = {{1, 0, 0, 1000, 25}};
  EXPECT_EQ(output(), "account.1073741824,1000,25,\n");
}

TEST_F(SocketTableToolTest, CountsWhatAnEndedProcessHadStillToSend) {
  constexpr std::int32_t kAccount = tidewell::AccountBook::kFirstIdentifier;
  accounts_.assign(7, kAccount);
  holders_->processes[7] = {100, "curl", 1, {41}};
  source_->sockets = {{1, 41, 0, 10, 20}};
  output();
  holders_->processes.clear();
  accounts_.noteEnd(7);
  source_->sockets = {{1, 0, 0, 10, 90}};
  EXPECT_EQ(output(), "account.1073741824,10,90,\n");
}

TEST_F(SocketTableToolTest, HearsOfClosedSocketsAlsoWhileTheInterfacesAreQuiet) {
  holders_->processes[7] = {100, "curl", 1, {41}};
  source_->sockets = {{1, 41, 0, 10, 20}};
  output();
  closed_->sockets = {{1, 0, 0, 1000, 25}};
  EXPECT_EQ(outputWhileQuiet(), "curl.7,1000,25,\n");
}

TEST_F(SocketTableToolTest, LooksAgainWhileSomethingWaitsToBeRead) {
  holders_->processes[7] = {100, "curl", 1, {41}};
  source_->sockets = {{1, 41, 0, 10, 20, true}};
  output();
  source_->sockets = {{1, 41, 0, 500, 20, false}};
  EXPECT_EQ(outputWhileQuiet(), "curl.7,500,20,\n");
  const int listings = source_->listings;
  outputWhileQuiet();
  EXPECT_EQ(source_->listings, listings);
}

TEST_F(SocketTableToolTest, OutlivesTheLateEndOfASocketWhoseOwnerIsLongGone) {
  holders_->processes[5] = {100, "sshd", 1, {43}};
  holders_->processes[7] = {100, "curl", 1, {41}};
  source_->sockets = {{1, 41, 0, 10, 20}, {3, 43, 0, 1, 2}};
  output();
  holders_->processes.erase(7);
  source_->sockets = {{1, 0, 0, 10, 20}, {3, 43, 0, 1, 2}};
  output();
  closed_->sockets = {{1, 0, 0, 99, 99}};
  EXPECT_EQ(output(), "sshd.5,1,2,\n");
  closed_->sockets = {{1, 0, 0, 100, 100}};
  EXPECT_EQ(outputWhileQuiet(), "sshd.5,1,2,\n");
}

}  // namespace
}  // namespace platform
