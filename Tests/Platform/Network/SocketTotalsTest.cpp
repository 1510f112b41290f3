#include "Platform/Linux/Network/SocketTotals.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <utility>
#include <vector>
#include "Tidewell/Accounting/AccountBook.h"

namespace platform {
namespace {

constexpr SocketOwner kNobody{0, 0};

/// Received and sent bytes.
using Bytes = std::pair<std::uint64_t, std::uint64_t>;

class SocketTotalsTest : public ::testing::Test {
 protected:
  struct Row {
    std::uint64_t cookie;
    Bytes bytes;
    SocketOwner owner;
  };

  void update(const std::vector<Row>& rows, Coverage coverage = Coverage::complete) {
    std::vector<SocketRecord> sockets;
    std::vector<SocketOwner> owners;
    for (const Row& row : rows) {
      sockets.push_back({row.cookie, 0, 0, row.bytes.first, row.bytes.second});
      owners.push_back(row.owner);
    }
    totals_.update(sockets, owners, coverage);
  }

  [[nodiscard]] std::optional<Bytes> of(std::int32_t pid) const {
    for (const SocketTotals::Total& total : totals_.all()) {
      if (total.identifier == pid) return Bytes(total.bytesReceived, total.bytesSent);
    }
    return std::nullopt;
  }

  SocketTotals totals_;
};

TEST_F(SocketTotalsTest, SumsTheSocketsOfAProcess) {
  update({{1, {10, 1}, {7, 100}}, {2, {20, 2}, {7, 100}}, {3, {5, 5}, {8, 100}}});
  EXPECT_EQ(of(7), Bytes(30, 3));
  EXPECT_EQ(of(8), Bytes(5, 5));
}

TEST_F(SocketTotalsTest, HasNoTotalOfAProcessWithoutSockets) {
  update({{1, {10, 1}, {7, 100}}});
  EXPECT_EQ(of(8), std::nullopt);
}

TEST_F(SocketTotalsTest, ListsProcessesAscendingByIdentifier) {
  update({{1, {1, 1}, {9, 1}}, {2, {1, 1}, {3, 1}}, {3, {1, 1}, {5, 1}}});
  ASSERT_EQ(totals_.all().size(), 3U);
  EXPECT_EQ(totals_.all()[0].identifier, 3);
  EXPECT_EQ(totals_.all()[1].identifier, 5);
  EXPECT_EQ(totals_.all()[2].identifier, 9);
}

TEST_F(SocketTotalsTest, CountsAByteOnce) {
  update({{1, {10, 1}, {7, 100}}});
  update({{1, {10, 1}, {7, 100}}});
  update({{1, {15, 3}, {7, 100}}});
  EXPECT_EQ(of(7), Bytes(15, 3));
}

TEST_F(SocketTotalsTest, KeepsTheBytesOfAClosedSocket) {
  update({{1, {10, 1}, {7, 100}}, {2, {20, 2}, {7, 100}}});
  update({{2, {20, 2}, {7, 100}}});
  update({{2, {21, 2}, {7, 100}}});
  EXPECT_EQ(of(7), Bytes(31, 3));
}

TEST_F(SocketTotalsTest, KeepsAProcessWithoutAnySocketLeft) {
  update({{1, {10, 1}, {7, 100}}});
  update({});
  update({});
  EXPECT_EQ(of(7), Bytes(10, 1));
}

TEST_F(SocketTotalsTest, NamesAProcessWhoseSocketsHaveCarriedNothingYet) {
  update({{1, {0, 0}, {7, 100}}});
  EXPECT_EQ(of(7), Bytes(0, 0));
}

TEST_F(SocketTotalsTest, NeverDecreasesWhenTheCountersOfASocketDo) {
  update({{1, {10, 10}, {7, 100}}});
  update({{1, {4, 4}, {7, 100}}});
  EXPECT_EQ(of(7), Bytes(10, 10));
  update({{1, {11, 10}, {7, 100}}});
  EXPECT_EQ(of(7), Bytes(11, 10));
}

TEST_F(SocketTotalsTest, CountsTheBytesFromBeforeTheOwnerWasKnown) {
  update({{1, {10, 1}, kNobody}});
  EXPECT_TRUE(totals_.all().empty());
  update({{1, {12, 1}, {7, 100}}});
  EXPECT_EQ(of(7), Bytes(12, 1));
}

TEST_F(SocketTotalsTest, LeavesEachOwnerTheBytesThatTheSocketCarriedForIt) {
  update({{1, {10, 1}, {7, 100}}});
  update({{1, {15, 1}, {8, 100}}});
  EXPECT_EQ(of(7), Bytes(10, 1));
  EXPECT_EQ(of(8), Bytes(5, 0));
}

TEST_F(SocketTotalsTest, CountsTheBytesBetweenTwoOwnersForTheSecond) {
  update({{1, {10, 0}, {7, 100}}});
  update({{1, {13, 0}, kNobody}});
  update({{1, {15, 0}, {8, 100}}});
  EXPECT_EQ(of(8), Bytes(5, 0));
}

TEST_F(SocketTotalsTest, BeginsAtZeroForALaterProcessWithTheSameIdentifier) {
  update({{1, {10, 1}, {7, 100}}});
  update({{2, {3, 3}, {7, 200}}});
  EXPECT_EQ(of(7), Bytes(3, 3));
}

TEST_F(SocketTotalsTest, DoesNotCountAgainASocketThatOneListingSkipped) {
  update({{1, {10, 1}, {7, 100}}, {2, {1, 1}, {7, 100}}});
  update({{2, {1, 1}, {7, 100}}});
  update({{1, {12, 1}, {7, 100}}, {2, {1, 1}, {7, 100}}});
  EXPECT_EQ(of(7), Bytes(13, 2));
}

TEST_F(SocketTotalsTest, DoesNotCountAgainASocketThatPartialListingsLacked) {
  update({{1, {10, 1}, {7, 100}}});
  update({}, Coverage::partial);
  update({}, Coverage::partial);
  update({}, Coverage::partial);
  update({{1, {12, 1}, {7, 100}}});
  EXPECT_EQ(of(7), Bytes(12, 1));
}

TEST_F(SocketTotalsTest, ForgetsTheProcessesThatAreNotAmongTheLiving) {
  update({{1, {10, 1}, {7, 100}}, {2, {10, 1}, {8, 100}}, {3, {10, 1}, {9, 100}}});
  const std::vector<OwnerProcess> living{{7, 100, 1}, {9, 300, 1}};
  totals_.keepOnly(living);
  EXPECT_EQ(of(7), Bytes(10, 1));
  EXPECT_EQ(of(8), std::nullopt);
  EXPECT_EQ(of(9), std::nullopt);
}

TEST_F(SocketTotalsTest, ForgetsASocketThatTwoListingsLacked) {
  update({{1, {10, 1}, {7, 100}}, {2, {10, 1}, {7, 100}}});
  EXPECT_EQ(totals_.socketCount(), 2U);
  update({{2, {10, 1}, {7, 100}}});
  update({{2, {10, 1}, {7, 100}}});
  EXPECT_EQ(totals_.socketCount(), 1U);
}

TEST_F(SocketTotalsTest, DoesNotGrowWithSocketsThatComeAndGo) {
  for (std::uint64_t cookie = 1; cookie <= 10'000; ++cookie) {
    update({{cookie, {1, 0}, {7, 100}}});
    ASSERT_LE(totals_.socketCount(), 2U);
  }
  EXPECT_EQ(of(7), Bytes(10'000, 0));
}

TEST_F(SocketTotalsTest, StopsBeforeTheSumOfBothCountersOverflows) {
  constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();
  update({{1, {kMax, kMax}, {7, 100}}, {2, {kMax, 5}, {7, 100}}});
  EXPECT_EQ(of(7), Bytes(0x7FFF'FFFF'FFFF'FFFF, 0x7FFF'FFFF'FFFF'FFFF));
}

class SocketTotalsByAccountTest : public SocketTotalsTest {
 protected:
  static constexpr std::int32_t kAccount = tidewell::AccountBook::kFirstIdentifier + 5;

  SocketTotalsByAccountTest() { totals_ = SocketTotals(&accounts_); }

  tidewell::AccountDirectory accounts_;
};

TEST_F(SocketTotalsByAccountTest, CountsTheProcessesOfAnAccountTogether) {
  accounts_.assign(7, kAccount);
  accounts_.assign(8, kAccount);
  update({{1, {10, 1}, {7, 100}}, {2, {20, 2}, {8, 100}}, {3, {5, 5}, {9, 100}}});
  EXPECT_EQ(of(kAccount), Bytes(30, 3));
  EXPECT_EQ(of(9), Bytes(5, 5));
  EXPECT_EQ(of(7), std::nullopt);
}

TEST_F(SocketTotalsByAccountTest, DoesNotChangeWhenAProcessEnds) {
  accounts_.assign(7, kAccount);
  update({{1, {10, 1}, {7, 100}}});
  accounts_.noteEnd(7);
  totals_.keepOnly({});
  update({});
  EXPECT_EQ(of(kAccount), Bytes(10, 1));
}

TEST_F(SocketTotalsByAccountTest, MovesTheBytesFromBeforeTheAccountWasKnown) {
  accounts_.assign(8, kAccount);
  update({{1, {10, 1}, {7, 100}}, {2, {1, 1}, {8, 100}}});
  EXPECT_EQ(of(7), Bytes(10, 1));
  accounts_.assign(7, kAccount);
  update({{1, {12, 1}, {7, 100}}, {2, {1, 1}, {8, 100}}});
  EXPECT_EQ(of(7), std::nullopt);
  EXPECT_EQ(of(kAccount), Bytes(13, 2));
}

TEST_F(SocketTotalsByAccountTest, LeavesTheFormerAccountTheBytesThatWereCountedThere) {
  accounts_.assign(7, kAccount);
  update({{1, {10, 1}, {7, 100}}});
  accounts_.assign(7, kAccount + 1);
  update({{1, {15, 1}, {7, 100}}});
  EXPECT_EQ(of(kAccount), Bytes(10, 1));
  EXPECT_EQ(of(kAccount + 1), Bytes(5, 0));
}

TEST_F(SocketTotalsByAccountTest, SaysWhichAccountsAreInUse) {
  accounts_.assign(7, kAccount);
  update({{1, {10, 1}, {7, 100}}});
  EXPECT_EQ(accounts_.takeUsed(), std::vector{kAccount});
  update({{1, {10, 1}, {7, 100}}});
  EXPECT_EQ(accounts_.takeUsed(), std::vector<std::int32_t>{}) << "nothing moved";
}

TEST_F(SocketTotalsByAccountTest, ForgetsTheAccountsThatStoodStillForLongestWhenThereAreTooMany) {
  constexpr std::int32_t kBrowser = tidewell::AccountBook::kFirstIdentifier;
  accounts_.assign(6, kBrowser);
  for (std::int32_t turn = 0; turn < 1030; ++turn) {
    accounts_.assign(7, kAccount + turn);
    const auto bytes = static_cast<std::uint64_t>(turn) + 1;
    update({{1, {bytes, 0}, {7, 100}}, {2, {bytes, 0}, {6, 100}}});
    totals_.keepOnly({});
  }
  EXPECT_EQ(totals_.all().size(), 1024U);
  EXPECT_EQ(of(kBrowser), Bytes(1030, 0));
  EXPECT_EQ(of(kAccount + 6), std::nullopt);
  EXPECT_EQ(of(kAccount + 7), Bytes(1, 0));
}

TEST_F(SocketTotalsTest, CountsTheLastBytesOfASocketThatWasListed) {
  update({{1, {10, 1}, {7, 100}}});
  totals_.countClosed({1, 0, 0, 14, 3}, {7, 100});
  EXPECT_EQ(of(7), Bytes(14, 3));
  totals_.countClosed({1, 0, 0, 14, 3}, {7, 100});
  EXPECT_EQ(of(7), Bytes(14, 3)) << "once";
  totals_.countClosed({2, 0, 0, 1000, 1000}, {7, 100});
  EXPECT_EQ(of(7), Bytes(14, 3)) << "never listed";
}

}  // namespace
}  // namespace platform
