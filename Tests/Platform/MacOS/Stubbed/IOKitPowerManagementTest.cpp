#include "Platform/MacOS/Sleep/IOKitPowerManagement.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "Platform/MacOS/Text/Unicode.h"
#include "Tests/Platform/MacOS/Stubs/PowerService.h"
#include "Tests/Platform/Sleep/PowerManagementContract.h"

namespace platform {
namespace {

using tidewell::AssertionKind;

class StubbedPower {
 public:
  static const char* missing() { return nullptr; }
  IOKitPowerManagement& power() { return power_; }
  static void refuse(bool refuses) {
    stub::PowerService::shared().creating = refuses ? kIOReturnError : kIOReturnSuccess;
  }
  static void pass() {}
  static bool settles(const std::function<bool()>& condition) { return condition(); }
  static std::vector<std::string> held() {
    std::vector<std::string> names;
    for (const auto& [identifier, assertion] : stub::PowerService::shared().held)
      names.push_back(
          utf8FromUtf16(std::vector<std::uint16_t>(assertion.name.begin(), assertion.name.end())));
    return names;
  }

 private:
  IOKitPowerManagement power_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(OfIOKit, PowerManagementContract, StubbedPower);

class IOKitPowerManagementTest : public ::testing::Test {
 protected:
  using Assertion = stub::PowerService::Assertion;

  /// What the service has of an assertion with this name, which is given back.
  Assertion held(AssertionKind kind, const std::string& name) {
    const auto creation = power.createAssertion(kind, name);
    EXPECT_EQ(creation.code, 0);
    if (creation.code != 0) return {};
    const Assertion assertion = service.held.at(creation.id);
    power.releaseAssertion(creation.id);
    return assertion;
  }

  stub::PowerService& service = stub::PowerService::shared();
  IOKitPowerManagement power;
};

TEST_F(IOKitPowerManagementTest, AsksForTheTypeOfEachKindSwitchedOn) {
  EXPECT_EQ(held(AssertionKind::system, "a"),
            (Assertion{u"PreventUserIdleSystemSleep", 255, u"a"}));
  EXPECT_EQ(held(AssertionKind::display, "b"),
            (Assertion{u"PreventUserIdleDisplaySleep", 255, u"b"}));
}

TEST_F(IOKitPowerManagementTest, GivesTheSystemsCodeWhenItRefuses) {
  service.creating = kIOReturnError;
  EXPECT_EQ(power.createAssertion(AssertionKind::system, "a").code, -536'870'212);
}

TEST_F(IOKitPowerManagementTest, SendsOnlyValidText) {
  EXPECT_EQ(held(AssertionKind::system, "caf\xC3\xA9 \xFF\xC3(").name, u"caf\u00E9 \uFFFD\uFFFD(");
}

TEST_F(IOKitPowerManagementTest, CutsANameToWhatTheSystemTakes) {
  EXPECT_EQ(held(AssertionKind::system, std::string(128, 'x')).name, std::u16string(128, u'x'));
  EXPECT_EQ(held(AssertionKind::system, std::string(129, 'x')).name, std::u16string(128, u'x'));
}

TEST_F(IOKitPowerManagementTest, CutsNoCharacterInTwo) {
  const std::string before(127, 'x');
  const std::u16string expected(127, u'x');
  EXPECT_EQ(held(AssertionKind::system, before + "\U0001F600 and more").name, expected);
  EXPECT_EQ(held(AssertionKind::system, before + "e\u0301 and more").name, expected);
  EXPECT_EQ(held(AssertionKind::system, before + "\u00E9 and more").name, expected + u"\u00E9");
}

TEST_F(IOKitPowerManagementTest, CutsTheNewNameAsWell) {
  const auto creation = power.createAssertion(AssertionKind::system, "a");
  power.setAssertionName(creation.id, std::string(200, 'y'));
  EXPECT_EQ(service.held.at(creation.id).name, std::u16string(128, u'y'));
  power.releaseAssertion(creation.id);
}

TEST_F(IOKitPowerManagementTest, KeepsTheOldNameWhereTheNewOneIsRefused) {
  const auto creation = power.createAssertion(AssertionKind::system, "a");
  service.renaming = kIOReturnError;
  power.setAssertionName(creation.id, "b");
  EXPECT_EQ(service.held.at(creation.id).name, u"a");
  power.releaseAssertion(creation.id);
}

}  // namespace
}  // namespace platform
