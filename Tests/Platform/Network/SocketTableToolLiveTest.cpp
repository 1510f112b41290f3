#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/Linux/Loop/ThreadQueues.h"
#include "Platform/Linux/Network/SocketDestroyNotifications.h"
#include "Platform/Linux/Network/SocketDiagnostics.h"
#include "Platform/Linux/Network/SocketTableTool.h"
#include "Platform/Linux/Time/BootTime.h"
#include "Tests/Platform/Network/LoopbackChild.h"
#include "Tests/Platform/Network/LoopbackServer.h"
#include "Tidewell/Accounting/AccountBook.h"
#include "Tidewell/NetworkSampler.h"

namespace platform {
namespace {

using namespace std::chrono_literals;

/// Received and sent bytes.
using Transferred = std::pair<std::uint64_t, std::uint64_t>;

/// How many bytes the opening and the closing mark of a connection may add to what it sent.
constexpr std::uint64_t kMarks = 2;

class SocketTableToolLive : public ::testing::Test {
 protected:
  void SetUp() override {
    std::vector<SocketRecord> sockets;
    if (SocketDiagnostics().list(sockets).errorNumber != 0) {
      GTEST_SKIP() << "this kernel or sandbox lists no sockets";
    }
  }

  std::string output() {
    const auto launched = tool_.launch("/usr/bin/nettop", {});
    EXPECT_EQ(launched.error, "");
    return launched.task ? launched.task->readToEnd(10'000'000).value_or("") : "";
  }

  /// What one run tells of a process, without the help of the sampler's parser.
  std::optional<Transferred> bytesOf(pid_t pid) {
    const std::string lines = output();
    const std::string mark = "." + std::to_string(pid) + ",";
    const std::size_t found = lines.find(mark);
    if (found == std::string::npos) return std::nullopt;
    std::size_t length = 0;
    const std::string rest = lines.substr(found + mark.size());
    const std::uint64_t received = std::stoull(rest, &length);
    return Transferred(received, std::stoull(rest.substr(length + 1)));
  }

  /// Lets the child pull `count` bytes through its last connection.
  static void pull(LoopbackChild& child, const Descriptor& serverEnd, std::uint64_t count) {
    child.beginReceive(count);
    ASSERT_TRUE(sendBytes(serverEnd, count));
    ASSERT_TRUE(child.finishReceive());
  }

  static void expectBetween(std::uint64_t value, std::uint64_t low, std::uint64_t high) {
    EXPECT_GE(value, low);
    EXPECT_LE(value, high);
  }

  SocketTableTool tool_;
};

TEST_F(SocketTableToolLive, CountsExactlyWhatAnotherProcessReceives) {
  const LoopbackServer server(AF_INET);
  LoopbackChild child(server);
  ASSERT_TRUE(child.connect());
  const Descriptor serverEnd = server.accept();
  EXPECT_EQ(bytesOf(child.pid()).value_or(Transferred(9, 9)).first, 0U);
  pull(child, serverEnd, 1'000'000);
  EXPECT_EQ(bytesOf(child.pid()).value_or(Transferred()).first, 1'000'000U);
  pull(child, serverEnd, 234'567);
  EXPECT_EQ(bytesOf(child.pid()).value_or(Transferred()).first, 1'234'567U);
}

TEST_F(SocketTableToolLive, CountsWhatAnotherProcessSends) {
  const LoopbackServer server(AF_INET);
  LoopbackChild child(server);
  ASSERT_TRUE(child.connect());
  const Descriptor serverEnd = server.accept();
  std::thread reader([&] { EXPECT_TRUE(receiveBytes(serverEnd, 500'000)); });
  ASSERT_TRUE(child.sendBytes(500'000));
  reader.join();
  // The last acknowledgement may come a moment after the data.
  Transferred bytes;
  const auto deadline = std::chrono::steady_clock::now() + 10s;
  while (bytes.second < 500'000 && std::chrono::steady_clock::now() < deadline) {
    bytes = bytesOf(child.pid()).value_or(Transferred());
  }
  expectBetween(bytes.second, 500'000, 500'000 + kMarks);
}

TEST_F(SocketTableToolLive, CountsIPv6AsWell) {
  const LoopbackServer server(AF_INET6);
  if (!server.isListening()) GTEST_SKIP() << "no IPv6 here";
  LoopbackChild child(server);
  ASSERT_TRUE(child.connect());
  const Descriptor serverEnd = server.accept();
  pull(child, serverEnd, 77'777);
  EXPECT_EQ(bytesOf(child.pid()).value_or(Transferred()).first, 77'777U);
}

TEST_F(SocketTableToolLive, KeepsBothEndsOfAConnectionApart) {
  const LoopbackServer server(AF_INET);
  LoopbackChild child(server);
  ASSERT_TRUE(child.connect());
  const Descriptor serverEnd = server.accept();
  pull(child, serverEnd, 40'000);
  const Transferred own = bytesOf(getpid()).value_or(Transferred());
  EXPECT_EQ(own.first, 0U);
  expectBetween(own.second, 40'000, 40'000 + kMarks);
}

TEST_F(SocketTableToolLive, KeepsTheBytesOfAClosedConnection) {
  const LoopbackServer server(AF_INET);
  LoopbackChild child(server);
  ASSERT_TRUE(child.connect());
  Descriptor first = server.accept();
  pull(child, first, 30'000);
  ASSERT_EQ(bytesOf(child.pid()).value_or(Transferred()).first, 30'000U);
  ASSERT_TRUE(child.close());
  first.reset();
  EXPECT_GE(bytesOf(child.pid()).value_or(Transferred()).first, 30'000U);
  ASSERT_TRUE(child.connect());
  const Descriptor second = server.accept();
  pull(child, second, 5'000);
  expectBetween(bytesOf(child.pid()).value_or(Transferred()).first, 35'000, 35'000 + kMarks);
}

TEST_F(SocketTableToolLive, LosesNoneOfAHundredConnectionsThatItSaw) {
  const LoopbackServer server(AF_INET);
  LoopbackChild child(server);
  for (int number = 0; number < 100; ++number) {
    ASSERT_TRUE(child.connect());
    const Descriptor serverEnd = server.accept();
    pull(child, serverEnd, 1'000);
    output();
    ASSERT_TRUE(child.close());
  }
  expectBetween(bytesOf(child.pid()).value_or(Transferred()).first, 100'000,
                100'000 + 100 * kMarks);
}

TEST_F(SocketTableToolLive, SeesAHundredConnectionsAtOnce) {
  const LoopbackServer server(AF_INET);
  LoopbackChild child(server);
  std::vector<Descriptor> serverEnds;
  for (int number = 0; number < 100; ++number) {
    ASSERT_TRUE(child.connect());
    serverEnds.push_back(server.accept());
    pull(child, serverEnds.back(), 1'000);
  }
  EXPECT_EQ(bytesOf(child.pid()).value_or(Transferred()).first, 100'000U);
}

TEST_F(SocketTableToolLive, DoesNotSeeAConnectionThatOpensAndClosesBetweenTwoRuns) {
  const LoopbackServer server(AF_INET);
  LoopbackChild child(server);
  ASSERT_TRUE(child.connect());
  const Descriptor lasting = server.accept();
  pull(child, lasting, 1'000);
  ASSERT_EQ(bytesOf(child.pid()).value_or(Transferred()).first, 1'000U);
  ASSERT_TRUE(child.connect());
  Descriptor brief = server.accept();
  pull(child, brief, 64'000);
  ASSERT_TRUE(child.close());
  brief.reset();
  EXPECT_EQ(bytesOf(child.pid()).value_or(Transferred()).first, 1'000U);
}

TEST_F(SocketTableToolLive, DropsAProcessThatHasEnded) {
  const LoopbackServer server(AF_INET);
  LoopbackChild child(server);
  ASSERT_TRUE(child.connect());
  const Descriptor serverEnd = server.accept();
  pull(child, serverEnd, 1'000);
  const pid_t pid = child.pid();
  ASSERT_TRUE(bytesOf(pid));
  child.end();
  EXPECT_EQ(bytesOf(pid), std::nullopt);
}

TEST_F(SocketTableToolLive, FindsTheConnectionsOfAProcessThatWasAtRestBefore) {
  const LoopbackServer server(AF_INET);
  LoopbackChild child(server);
  LoopbackChild other(server);
  // Runs that search everybody, and find the first child without any connection.
  for (int run = 0; run < 3; ++run) {
    ASSERT_TRUE(other.connect());
    const Descriptor serverEnd = server.accept();
    output();
  }
  ASSERT_TRUE(child.connect());
  const Descriptor serverEnd = server.accept();
  pull(child, serverEnd, 2'222);
  EXPECT_EQ(bytesOf(child.pid()).value_or(Transferred()).first, 2'222U);
}

TEST_F(SocketTableToolLive, ReachesTheSamplerThroughAQueueOfItsOwn) {
  struct SystemClock : tidewell::Clock {
    tidewell::Moment now() override { return BootTime::now(); }
    tidewell::WallTime wallTime() override { return std::chrono::system_clock::now(); }
    void sleepFor(tidewell::Seconds duration) override { std::this_thread::sleep_for(duration); }
  } clock;
  const LoopbackServer server(AF_INET);
  LoopbackChild child(server);
  ASSERT_TRUE(child.connect());
  const Descriptor serverEnd = server.accept();
  pull(child, serverEnd, 123'456);
  ThreadQueues queues;
  tidewell::NetworkSampler sampler(tool_, queues, clock);
  const auto deadline = std::chrono::steady_clock::now() + 10s;
  while (!sampler.currentTotals().contains(child.pid()) &&
         std::chrono::steady_clock::now() < deadline) {
    sampler.refresh();
    std::this_thread::sleep_for(1ms);
  }
  const auto totals = sampler.currentTotals();
  ASSERT_TRUE(totals.contains(child.pid()));
  expectBetween(totals.at(child.pid()), 123'456, 123'456 + kMarks);
}

TEST_F(SocketTableToolLive, KeepsAllThatAProcessMovedBeforeItEnded) {
  if (!SocketDestroyNotifications().isAvailable()) GTEST_SKIP() << "no announcements here";
  constexpr std::int32_t kAccount = tidewell::AccountBook::kFirstIdentifier;
  tidewell::AccountDirectory accounts;
  SocketTableTool tool(&accounts);
  const auto bytesReceived = [&] {
    const auto launched = tool.launch("", {});
    const std::string lines = launched.task->readToEnd(10'000'000).value_or("");
    const std::string mark = "account." + std::to_string(kAccount) + ",";
    const auto found = lines.find(mark);
    return found == std::string::npos ? 0 : std::stoull(lines.substr(found + mark.size()));
  };
  const LoopbackServer server(AF_INET);
  {
    LoopbackChild child(server);
    accounts.assign(child.pid(), kAccount);
    ASSERT_TRUE(child.connect());
    const Descriptor serverEnd = server.accept();
    pull(child, serverEnd, 100'000);
    EXPECT_EQ(bytesReceived(), 100'000U);
    pull(child, serverEnd, 23'456);
  }
  // The kernel destroys a socket a moment after its process has ended.
  std::uint64_t bytes = 0;
  const auto deadline = std::chrono::steady_clock::now() + 10s;
  while (bytes < 123'456 && std::chrono::steady_clock::now() < deadline)
    bytes = bytesReceived();
  expectBetween(bytes, 123'456, 123'456 + kMarks);
}

}  // namespace
}  // namespace platform
