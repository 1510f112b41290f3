#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
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
#include "Platform/Linux/Network/SocketMeter.h"
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

class SocketMeterLive : public ::testing::Test {
 protected:
  void SetUp() override {
    std::vector<SocketRecord> sockets;
    if (SocketDiagnostics().list(sockets).errorNumber != 0) {
      GTEST_SKIP() << "this kernel or sandbox lists no sockets";
    }
  }

  void measure() { EXPECT_EQ(meter_.measure(cancellation_).error, ""); }

  /// The totals of a process in one measurement.
  std::optional<Transferred> bytesOf(pid_t pid) {
    measure();
    const auto found = std::ranges::find(meter_.totals(), pid, &SocketTotals::Total::identifier);
    if (found == meter_.totals().end()) return std::nullopt;
    return Transferred(found->bytesReceived, found->bytesSent);
  }

  /// Lets the child receive `count` bytes over its last connection.
  static void pull(LoopbackChild& child, const Descriptor& serverEnd, std::uint64_t count) {
    child.beginReceive(count);
    ASSERT_TRUE(sendBytes(serverEnd, count));
    ASSERT_TRUE(child.finishReceive());
  }

  static void expectBetween(std::uint64_t value, std::uint64_t low, std::uint64_t high) {
    EXPECT_GE(value, low);
    EXPECT_LE(value, high);
  }

  SocketMeter meter_;
  tidewell::Cancellation cancellation_;
};

TEST_F(SocketMeterLive, CountsExactlyWhatAnotherProcessReceives) {
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

TEST_F(SocketMeterLive, CountsWhatAnotherProcessSends) {
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

TEST_F(SocketMeterLive, CountsIPv6AsWell) {
  const LoopbackServer server(AF_INET6);
  if (!server.isListening()) GTEST_SKIP() << "no IPv6 here";
  LoopbackChild child(server);
  ASSERT_TRUE(child.connect());
  const Descriptor serverEnd = server.accept();
  pull(child, serverEnd, 77'777);
  EXPECT_EQ(bytesOf(child.pid()).value_or(Transferred()).first, 77'777U);
}

TEST_F(SocketMeterLive, KeepsBothEndsOfAConnectionApart) {
  const LoopbackServer server(AF_INET);
  LoopbackChild child(server);
  ASSERT_TRUE(child.connect());
  const Descriptor serverEnd = server.accept();
  pull(child, serverEnd, 40'000);
  const Transferred own = bytesOf(getpid()).value_or(Transferred());
  EXPECT_EQ(own.first, 0U);
  expectBetween(own.second, 40'000, 40'000 + kMarks);
}

TEST_F(SocketMeterLive, KeepsTheBytesOfAClosedConnection) {
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

TEST_F(SocketMeterLive, CountsEachOfAHundredConnectionsThatItSaw) {
  const LoopbackServer server(AF_INET);
  LoopbackChild child(server);
  for (int number = 0; number < 100; ++number) {
    ASSERT_TRUE(child.connect());
    const Descriptor serverEnd = server.accept();
    pull(child, serverEnd, 1'000);
    measure();
    ASSERT_TRUE(child.close());
  }
  expectBetween(bytesOf(child.pid()).value_or(Transferred()).first, 100'000,
                100'000 + 100 * kMarks);
}

TEST_F(SocketMeterLive, SeesAHundredConnectionsAtOnce) {
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

TEST_F(SocketMeterLive, DoesNotSeeAConnectionThatOpensAndClosesBetweenTwoRuns) {
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

TEST_F(SocketMeterLive, DropsAProcessThatHasEnded) {
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

TEST_F(SocketMeterLive, FindsTheConnectionsOfAProcessThatWasAtRestBefore) {
  const LoopbackServer server(AF_INET);
  LoopbackChild child(server);
  LoopbackChild other(server);
  // These runs search all processes, and find the first child without any connection.
  for (int run = 0; run < 3; ++run) {
    ASSERT_TRUE(other.connect());
    const Descriptor serverEnd = server.accept();
    measure();
  }
  ASSERT_TRUE(child.connect());
  const Descriptor serverEnd = server.accept();
  pull(child, serverEnd, 2'222);
  EXPECT_EQ(bytesOf(child.pid()).value_or(Transferred()).first, 2'222U);
}

TEST_F(SocketMeterLive, ReachesTheSamplerThroughAQueueOfItsOwn) {
  const LoopbackServer server(AF_INET);
  LoopbackChild child(server);
  ASSERT_TRUE(child.connect());
  const Descriptor serverEnd = server.accept();
  pull(child, serverEnd, 123'456);
  ThreadQueues queues;
  tidewell::NetworkSampler sampler(meter_, queues);
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

TEST_F(SocketMeterLive, KeepsAllBytesThatAProcessMovedBeforeItEnded) {
  if (!SocketDestroyNotifications().isAvailable()) GTEST_SKIP() << "no announcements here";
  constexpr std::int32_t kAccount = tidewell::AccountBook::kFirstIdentifier;
  tidewell::AccountDirectory accounts;
  SocketMeter meter(&accounts);
  const auto bytesReceived = [&]() -> std::uint64_t {
    meter.measure(cancellation_);
    const auto found =
        std::ranges::find(meter.totals(), kAccount, &SocketTotals::Total::identifier);
    return found == meter.totals().end() ? 0 : found->bytesReceived;
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
