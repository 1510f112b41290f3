#include "Platform/MacOS/Sleep/IOKitAssertionTable.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Tests/Platform/MacOS/Stubs/Kernel.h"
#include "Tests/Platform/MacOS/Stubs/PowerService.h"
#include "Tests/Platform/MacOS/Stubs/Utf16.h"
#include "Tests/Platform/MacOS/Stubs/Workspace.h"
#include "Tests/Platform/Sleep/AssertionTableContract.h"

namespace platform {
namespace {

class StubbedTable {
 public:
  static const char* missing() { return nullptr; }
  IOKitAssertionTable& table() { return table_; }
  static void hold(std::int32_t pid, const std::string& reason) {
    auto& others = stub::PowerService::shared().others;
    if (others.empty() || others.back().first != pid) others.emplace_back(pid, stub::List());
    std::get<stub::List>(others.back().second.content)
        .push_back(stub::PowerService::listed(
            {u"PreventUserIdleSystemSleep", 255, stub::utf16(reason).value()}));
  }
  static void holdAsStaylit(std::int32_t pid) {
    stub::Workspace::shared().applications[pid] = "com.staylit.app";
    hold(pid, "waiting for work to resume");
  }
  static void fail() { stub::PowerService::shared().listing = kIOReturnError; }

 private:
  IOKitAssertionTable table_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(OfIOKit, AssertionTableContract, StubbedTable);

/// The system's answers in shapes that nobody expects.
class IOKitAssertionTableTest : public ::testing::Test {
 protected:
  using Holders = std::vector<tidewell::AssertionHolder>;

  /// What the table makes of such an answer.
  std::optional<Holders> listed(const stub::Value& answer) {
    service.answer = answer;
    return table.assertionsByProcess();
  }

  stub::PowerService& service = stub::PowerService::shared();
  IOKitAssertionTable table;
};

TEST_F(IOKitAssertionTableTest, IsAbsentWithoutAnAnswer) {
  service.givesNoList = true;
  EXPECT_EQ(table.assertionsByProcess(), std::nullopt);
}

TEST_F(IOKitAssertionTableTest, IsAbsentForAnAnswerOfAnotherShape) {
  const stub::Value assertions = stub::List{stub::Dictionary{{u"AssertLevel", 255}}};
  EXPECT_EQ(listed(stub::List{}), std::nullopt);
  EXPECT_EQ(listed(stub::Dictionary{{u"7", assertions}}), std::nullopt);
  EXPECT_EQ(listed(stub::Dictionary{{7, u"assertions"}}), std::nullopt);
  EXPECT_EQ(listed(stub::Dictionary{{7, stub::List{u"assertion"}}}), std::nullopt);
  EXPECT_EQ(listed(stub::Dictionary{{7, stub::List{stub::Dictionary{{1, 2}}}}}), std::nullopt);
}

TEST_F(IOKitAssertionTableTest, KeepsAnAssertionThatItCannotRead) {
  const auto holders = listed(stub::Dictionary{
      {7, stub::List{stub::Dictionary{{u"AssertLevel", u"high"}, {u"Since", stub::Opaque()}}}}});
  EXPECT_EQ(holders, (Holders{{7, {{"", std::nullopt, ""}}}}));
}

TEST_F(IOKitAssertionTableTest, ReadsAProcessWithoutAssertions) {
  EXPECT_EQ(listed(stub::Dictionary{{7, stub::List{}}}), (Holders{{7, {}}}));
}

TEST_F(IOKitAssertionTableTest, KeepsEveryNumberOfAProcessAsItIs) {
  constexpr std::int64_t kHuge = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(listed(stub::Dictionary{{kHuge, stub::List{}}, {-7, stub::List{}}}),
            (Holders{{kHuge, {}}, {-7, {}}}));
}

TEST_F(IOKitAssertionTableTest, LeavesOutWhatThePowerDaemonHoldsForTheDisplay) {
  const stub::Value assertions = stub::List{
      stub::PowerService::listed(
          {u"PreventUserIdleSystemSleep", 255, u"Powerd - Prevent sleep while display is on"}),
      stub::PowerService::listed({u"PreventUserIdleSystemSleep", 255, u"another reason"})};
  service.others = {{338, assertions}, {7, assertions}};
  stub::Kernel::shared().processes = {
      {.pid = 338, .path = "/System/Library/CoreServices/powerd.bundle/powerd"},
      {.pid = 7, .path = "/Users/b/powerd"}};
  const auto holders = table.assertionsByProcess();
  ASSERT_TRUE(holders);
  ASSERT_EQ(holders->size(), 2U);
  ASSERT_EQ(holders->at(0).assertions.size(), 1U);
  EXPECT_EQ(holders->at(0).assertions.front().reason, "another reason");
  EXPECT_EQ(holders->at(1).assertions.size(), 2U) << "another program of that name";
}

}  // namespace
}  // namespace platform
