// Real assertions of this process, as the system lists them.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "Platform/MacOS/Sleep/IOKitAssertionTable.h"
#include "Platform/MacOS/Sleep/IOKitPowerManagement.h"

namespace platform {
namespace {

constexpr std::int64_t kOn = 255;

/// An assertion that is given back at the end.
class Held {
 public:
  Held(tidewell::AssertionKind kind, const std::string& name)
      : creation_(power_.createAssertion(kind, name)) {}
  ~Held() { power_.releaseAssertion(creation_.id); }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;

  [[nodiscard]] std::int32_t code() const { return creation_.code; }
  [[nodiscard]] std::uint32_t id() const { return creation_.id; }
  void rename(const std::string& name) { power_.setAssertionName(creation_.id, name); }

 private:
  IOKitPowerManagement power_;
  tidewell::PowerManagement::Creation creation_;
};

/// The assertions of `type` that the system lists for this process.
std::vector<tidewell::ListedAssertion> listed(const std::string& type) {
  std::vector<tidewell::ListedAssertion> found;
  const auto table = IOKitAssertionTable().assertionsByProcess();
  EXPECT_TRUE(table.has_value());
  if (!table) return found;
  for (const auto& [process, assertions] : *table) {
    if (process != getpid()) continue;
    for (const tidewell::ListedAssertion& assertion : assertions) {
      if (assertion.type == type) found.push_back(assertion);
    }
  }
  return found;
}

using Assertions = std::vector<tidewell::ListedAssertion>;

TEST(IOKitAssertions, AreListedWithTypeNameAndLevelWhileTheyAreHeld) {
  using Kind = tidewell::AssertionKind;
  for (const auto& [kind, type] : {std::pair(Kind::system, "PreventUserIdleSystemSleep"),
                                   std::pair(Kind::display, "PreventUserIdleDisplaySleep")}) {
    {
      const Held held(kind, "a test is working");
      EXPECT_EQ(held.code(), 0);
      EXPECT_NE(held.id(), 0U);
      EXPECT_EQ(listed(type), (Assertions{{type, kOn, "a test is working"}}));
    }
    EXPECT_EQ(listed(type), Assertions{});
  }
}

TEST(IOKitAssertions, CanBeRenamedWhileTheyAreHeld) {
  Held held(tidewell::AssertionKind::system, "a test is working");
  held.rename("é and 2 more are working");
  EXPECT_EQ(listed("PreventUserIdleSystemSleep"),
            (Assertions{{"PreventUserIdleSystemSleep", kOn, "é and 2 more are working"}}));
}

TEST(IOKitAssertions, AreToldWhileTheyLive) {
  IOKitPowerManagement power;
  const auto creation = power.createAssertion(tidewell::AssertionKind::system, "a test is working");
  power.setAssertionName(creation.id, "two tests are working");
  ASSERT_EQ(power.liveAssertions().size(), 1U);
  EXPECT_EQ(power.liveAssertions()[0].name, "two tests are working");
  EXPECT_EQ(power.liveAssertions()[0].grants.size(), 1U);
  power.releaseAssertion(creation.id);
  EXPECT_TRUE(power.liveAssertions().empty());
}

TEST(IOKitAssertions, HaveTheirNamesCutToWhatTheSystemTakes) {
  const Held held(tidewell::AssertionKind::system, std::string(200, 'x'));
  EXPECT_EQ(held.code(), 0);
  EXPECT_EQ(listed("PreventUserIdleSystemSleep"),
            (Assertions{{"PreventUserIdleSystemSleep", kOn, std::string(128, 'x')}}));
}

TEST(IOKitAssertions, KnowThisProcess) {
  EXPECT_EQ(IOKitAssertionTable().ownProcessIdentifier(), getpid());
}

}  // namespace
}  // namespace platform
