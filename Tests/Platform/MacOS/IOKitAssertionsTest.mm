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

using tidewell::PropertyValue;

constexpr std::uint32_t kOn = 255;

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

/// What the system lists under `key` of the assertions that this process holds of `type`.
std::vector<PropertyValue> listed(const std::string& type, const std::string& key) {
  std::vector<PropertyValue> values;
  const auto table = IOKitAssertionTable().assertionsByProcess();
  EXPECT_TRUE(table.has_value());
  if (!table) return values;
  for (const auto& [pid, assertions] : *table) {
    if (pid != getpid()) continue;
    for (const tidewell::PropertyDictionary& assertion : assertions) {
      const auto kind = assertion.find("AssertType");
      const auto value = assertion.find(key);
      if (kind == assertion.end() || value == assertion.end()) continue;
      if (kind->second == PropertyValue(type)) values.push_back(value->second);
    }
  }
  return values;
}

using Values = std::vector<PropertyValue>;

TEST(IOKitAssertions, AreListedWithTypeNameAndLevelWhileTheyAreHeld) {
  using Kind = tidewell::AssertionKind;
  for (const auto& [kind, type] : {std::pair(Kind::system, "PreventUserIdleSystemSleep"),
                                   std::pair(Kind::display, "PreventUserIdleDisplaySleep")}) {
    {
      const Held held(kind, "a test is working");
      EXPECT_EQ(held.code(), 0);
      EXPECT_NE(held.id(), 0U);
      EXPECT_EQ(listed(type, "AssertName"), Values{std::string("a test is working")});
      EXPECT_EQ(listed(type, "AssertLevel"), Values{std::int64_t{kOn}});
    }
    EXPECT_EQ(listed(type, "AssertName"), Values{});
  }
}

TEST(IOKitAssertions, CanBeRenamedWhileTheyAreHeld) {
  Held held(tidewell::AssertionKind::system, "a test is working");
  held.rename("é and 2 more are working");
  EXPECT_EQ(listed("PreventUserIdleSystemSleep", "AssertName"),
            Values{std::string("é and 2 more are working")});
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
  EXPECT_EQ(listed("PreventUserIdleSystemSleep", "AssertName"), Values{std::string(128, 'x')});
}

TEST(IOKitAssertions, KnowThisProcess) {
  EXPECT_EQ(IOKitAssertionTable().ownProcessIdentifier(), getpid());
}

}  // namespace
}  // namespace platform
