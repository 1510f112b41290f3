#include "Platform/Linux/Network/SocketOwners.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Linux/Network/OwnerProcesses.h"
#include "Tests/Platform/Network/FakeSocketHolders.h"

namespace platform {
namespace {

using namespace std::chrono_literals;
using Pids = std::vector<std::int32_t>;

class SocketOwnersTest : public ::testing::Test {
 protected:
  /// A socket whose cookie is a thousand more than its inode.
  static SocketRecord socket(std::uint32_t inode, std::uint32_t uid = 1000) {
    return {1000 + inode, inode, uid, 0, 0};
  }

  /// Makes another run and returns the processes that own `sockets`. The log of searches begins
  /// anew.
  Pids ownersOf(const std::vector<SocketRecord>& sockets, Coverage coverage = Coverage::complete) {
    return ownersOf(owners_, sockets, coverage);
  }

  Pids ownersOf(SocketOwners& owners, const std::vector<SocketRecord>& sockets, Coverage coverage) {
    holders_.searched.clear();
    holders_.identified.clear();
    processes_.refresh();
    Pids pids;
    for (const SocketOwner& owner : owners.find(sockets, coverage, now_))
      pids.push_back(owner.pid);
    return pids;
  }

  /// Makes runs with only known sockets, until every process has been searched at rest.
  void settle(const std::vector<SocketRecord>& sockets) {
    ownersOf(sockets);
    ownersOf(sockets);
    ownersOf(sockets);
  }

  FakeSocketHolders holders_;
  OwnerProcesses processes_{holders_};
  SocketOwners owners_{holders_, processes_, std::nullopt};
  SocketOwners::Time now_{1h};
};

TEST_F(SocketOwnersTest, FindsTheProcessThatHoldsASocket) {
  holders_.processes[5] = {100, 1, {41, 42}};
  holders_.processes[6] = {100, 1, {43}};
  EXPECT_EQ(ownersOf({socket(41), socket(42), socket(43)}), (Pids{5, 5, 6}));
}

TEST_F(SocketOwnersTest, KnowsTheStartOfTheOwner) {
  holders_.processes[5] = {777, 1, {41}};
  const std::vector<SocketRecord> sockets{socket(41)};
  const auto owners = owners_.find(sockets, Coverage::complete, now_);
  ASSERT_EQ(owners.size(), 1U);
  EXPECT_EQ(owners[0].startTime, 777U);
}

TEST_F(SocketOwnersTest, SearchesNoProcessForAKnownSocket) {
  holders_.processes[5] = {100, 1, {41}};
  ownersOf({socket(41)});
  holders_.run(5);
  EXPECT_EQ(ownersOf({socket(41)}), (Pids{5}));
  EXPECT_EQ(holders_.searched, (Pids{}));
}

TEST_F(SocketOwnersTest, SearchesYoungerProcessesFirstAndStopsWhenAllSocketsAreFound) {
  holders_.processes[5] = {100, 1, {41}};
  holders_.processes[6] = {100, 1, {42}};
  holders_.processes[7] = {100, 1, {}};
  ownersOf({socket(42)});
  EXPECT_EQ(holders_.searched, (Pids{7, 6}));
}

TEST_F(SocketOwnersTest, SearchesProcessesThatOwnSocketsBeforeOthers) {
  holders_.processes[5] = {100, 1, {41}};
  ownersOf({socket(41)});
  holders_.processes[6] = {100, 1, {}};
  holders_.processes[5].sockets.push_back(42);
  holders_.run(5);
  EXPECT_EQ(ownersOf({socket(41), socket(42)}), (Pids{5, 5}));
  EXPECT_EQ(holders_.searched, (Pids{5}));
}

TEST_F(SocketOwnersTest, SearchesAProcessThatWasFoundAtRestOnlyAfterItRan) {
  holders_.processes[5] = {100, 1, {41}};
  holders_.processes[6] = {100, 1, {}};
  settle({socket(40)});
  holders_.run(6);
  now_ += 1min;
  ownersOf({socket(40)});
  EXPECT_EQ(holders_.searched, (Pids{6}));
}

TEST_F(SocketOwnersTest, FindsASocketOpenedBetweenTheListingAndTheSearch) {
  holders_.processes[5] = {100, 1, {41, 42}};
  // Socket 42 was opened just before the search for socket 40, so only the next listing has it. The
  // process has not run since.
  ownersOf({socket(40)});
  EXPECT_EQ(ownersOf({socket(40), socket(42)}), (Pids{0, 5}));
}

TEST_F(SocketOwnersTest, SearchesEveryProcessWhenTheSystemTellsNoCpuTime) {
  holders_.refusesCpuTime = true;
  holders_.processes[5] = {100, 1, {41}};
  holders_.processes[6] = {100, 1, {}};
  settle({socket(40)});
  now_ += 1min;
  EXPECT_EQ(ownersOf({socket(40), socket(41)}), (Pids{0, 5}));
  EXPECT_EQ(holders_.searched, (Pids{6, 5}));
}

TEST_F(SocketOwnersTest, LooksForAMissingSocketOnceMoreAndThenEvery30Seconds) {
  holders_.refusesCpuTime = true;
  holders_.processes[5] = {100, 1, {}};
  ownersOf({socket(41)});
  EXPECT_EQ(holders_.searched, (Pids{5}));
  ownersOf({socket(41)});
  EXPECT_EQ(holders_.searched, (Pids{5}));
  ownersOf({socket(41)});
  EXPECT_EQ(holders_.searched, (Pids{}));
  now_ += 29s;
  ownersOf({socket(41)});
  EXPECT_EQ(holders_.searched, (Pids{}));
  now_ += 1s;
  ownersOf({socket(41)});
  EXPECT_EQ(holders_.searched, (Pids{5}));
}

TEST_F(SocketOwnersTest, FindsAMissingSocketDuringTheSearchForAnother) {
  holders_.processes[5] = {100, 1, {}};
  settle({socket(41)});
  holders_.processes[5].sockets = {41, 42};
  holders_.run(5);
  EXPECT_EQ(ownersOf({socket(41), socket(42)}), (Pids{5, 5}));
}

TEST_F(SocketOwnersTest, FindsAMissingSocketAtTheRetryEvenIfItsHolderRanLongBefore) {
  holders_.processes[5] = {100, 1, {}};
  holders_.processes[6] = {100, 1, {}};
  settle({socket(41)});
  holders_.processes[5].sockets = {41};
  holders_.run(5);
  holders_.processes[6].sockets = {42};
  holders_.run(6);
  // The search for 42 stops before it comes to process 5.
  EXPECT_EQ(ownersOf({socket(41), socket(42)}), (Pids{0, 6}));
  now_ += 30s;
  EXPECT_EQ(ownersOf({socket(41), socket(42)}), (Pids{5, 6}));
}

TEST_F(SocketOwnersTest, SearchesNoProcessForASocketThatNobodyHolds) {
  holders_.processes[5] = {100, 1, {41}};
  EXPECT_EQ(ownersOf({socket(0)}), (Pids{0}));
  EXPECT_EQ(holders_.searched, (Pids{}));
}

TEST_F(SocketOwnersTest, LooksForAWaitingConnectionAsSoonAsItIsAccepted) {
  holders_.processes[5] = {100, 1, {}};
  const std::uint64_t cookie = 9;
  ownersOf({{cookie, 0, 1000, 0, 0}});
  holders_.processes[5].sockets = {44};
  holders_.run(5);
  EXPECT_EQ(ownersOf({{cookie, 44, 1000, 0, 0}}), (Pids{5}));
}

TEST_F(SocketOwnersTest, LeavesAClosedSocketToItsProcess) {
  holders_.processes[5] = {100, 1, {41}};
  ownersOf({socket(41)});
  holders_.processes[5].sockets = {};
  SocketRecord closed = socket(41);
  closed.inode = 0;
  EXPECT_EQ(ownersOf({closed}), (Pids{5}));
}

TEST_F(SocketOwnersTest, NeverLooksForAnotherUsersSocketWhenItMayNotReadThatUsersProcesses) {
  SocketOwners owners(holders_, processes_, 1000);
  holders_.processes[5] = {100, 1, {41}};
  EXPECT_EQ(ownersOf(owners, {socket(41, 0)}, Coverage::complete), (Pids{0}));
  EXPECT_EQ(holders_.searched, (Pids{}));
  EXPECT_EQ(ownersOf(owners, {socket(41, 1000)}, Coverage::complete), (Pids{5}));
}

TEST_F(SocketOwnersTest, LooksForAnotherOwnerWhenTheFirstHasEnded) {
  holders_.processes[5] = {100, 1, {41}};
  holders_.processes[6] = {100, 1, {41}};
  EXPECT_EQ(ownersOf({socket(41)}), (Pids{6}));
  holders_.processes.erase(6);
  EXPECT_EQ(ownersOf({socket(41)}), (Pids{5}));
}

TEST_F(SocketOwnersTest, TreatsALaterProcessWithTheSameIdentifierAsAnother) {
  holders_.processes[5] = {100, 50, {41}};
  ASSERT_EQ(ownersOf({socket(41)}), (Pids{5}));
  holders_.processes[5] = {200, 2, {}};
  EXPECT_EQ(ownersOf({socket(41)}), (Pids{0}));
}

TEST_F(SocketOwnersTest, SkipsProcessesThatMayNotBeRead) {
  holders_.processes[5] = {100, 1, {41}};
  holders_.processes[6] = {100, 1, {42}, false};
  EXPECT_EQ(ownersOf({socket(41), socket(42)}), (Pids{5, 0}));
}

TEST_F(SocketOwnersTest, GivesAllConnectionsOfOneDescriptorToItsHolder) {
  holders_.processes[5] = {100, 1, {41}};
  EXPECT_EQ(ownersOf({{1, 41, 0, 0, 0}, {2, 41, 0, 0, 0}}), (Pids{5, 5}));
}

TEST_F(SocketOwnersTest, RemembersASocketThatAListingSkipped) {
  holders_.processes[5] = {100, 1, {41}};
  ownersOf({socket(41)});
  ownersOf({});
  EXPECT_EQ(ownersOf({socket(41)}), (Pids{5}));
  EXPECT_EQ(holders_.searched, (Pids{}));
}

TEST_F(SocketOwnersTest, RemembersASocketThatPartialListingsLacked) {
  holders_.processes[5] = {100, 1, {41}};
  ownersOf({socket(41)});
  ownersOf({}, Coverage::partial);
  ownersOf({}, Coverage::partial);
  EXPECT_EQ(ownersOf({socket(41)}), (Pids{5}));
  EXPECT_EQ(holders_.searched, (Pids{}));
}

TEST_F(SocketOwnersTest, ReadsTheStartTimeOfAProcessOnlyAfterItRan) {
  holders_.processes[5] = {100, 1, {41}};
  ownersOf({socket(41)});
  ownersOf({socket(41)});
  EXPECT_EQ(holders_.identified, (Pids{}));
  holders_.run(5);
  ownersOf({socket(41)});
  EXPECT_EQ(holders_.identified, (Pids{5}));
}

TEST_F(SocketOwnersTest, ForgetsOwnersThatHaveEnded) {
  holders_.processes[5] = {100, 1, {41}};
  holders_.processes[6] = {100, 1, {42}};
  ownersOf({socket(41), socket(42)});
  holders_.processes.erase(5);
  ownersOf({socket(42)});
  ASSERT_EQ(processes_.all().size(), 1U);
  EXPECT_EQ(processes_.all()[0].pid, 6);
}

}  // namespace
}  // namespace platform
