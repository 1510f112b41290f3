#include "Platform/MacOS/Settings/UserDefaultsStore.h"

#include <gtest/gtest.h>

#include "Tests/Platform/Settings/DefaultsContract.h"

namespace platform {
namespace {

/// One name a test, for ever: the system may keep the empty file of a suite.
NSString* suiteName() {
  const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
  NSString* name =
      [NSString stringWithFormat:@"com.staylit.tests.%s.%s", test->test_suite_name(), test->name()];
  return [name stringByReplacingOccurrencesOfString:@"/" withString:@"."];
}

/// A suite of the test's own, emptied before and after it. What is registered belongs to the whole
/// process, so it is forgotten as well.
struct OwnSuite {
  OwnSuite() { forget(); }
  ~OwnSuite() { forget(); }
  OwnSuite(const OwnSuite&) = delete;
  OwnSuite& operator=(const OwnSuite&) = delete;

  void forget() const {
    [store removePersistentDomainForName:name];
    [store removeVolatileDomainForName:NSRegistrationDomain];
  }

  NSString* const name = suiteName();
  NSUserDefaults* const store = [[NSUserDefaults alloc] initWithSuiteName:name];
  UserDefaultsStore defaults{store};
};

INSTANTIATE_TYPED_TEST_SUITE_P(UserDefaults, DefaultsContract, OwnSuite);

TEST(UserDefaultsStore, KeepsWhatWasSetForTheNextProcess) {
  OwnSuite suite;
  suite.defaults.setInteger("graceSeconds", 90);
  NSDictionary<NSString*, id>* stored = [suite.store persistentDomainForName:suite.name];
  EXPECT_EQ([stored[@"graceSeconds"] integerValue], 90);
}

TEST(UserDefaultsStore, KeepsNoneOfTheRegisteredDefaults) {
  OwnSuite suite;
  suite.defaults.registerDefaults({{"graceSeconds", std::int64_t{120}}});
  EXPECT_EQ([suite.store persistentDomainForName:suite.name].count, 0U);
}

TEST(UserDefaultsStore, ReadsWhatTheDefaultsToolWrites) {
  OwnSuite suite;
  [suite.store setObject:@"45" forKey:@"graceSeconds"];
  [suite.store setObject:@"YES" forKey:@"keepScreenOn"];
  EXPECT_EQ(suite.defaults.integer("graceSeconds"), 45);
  EXPECT_TRUE(suite.defaults.boolean("keepScreenOn"));
}

TEST(UserDefaultsStore, TakesAListWithAnythingButTextsForNone) {
  OwnSuite suite;
  [suite.store setObject:@[ @"a", @1 ] forKey:@"ignoredApps"];
  EXPECT_EQ(suite.defaults.stringList("ignoredApps"), std::nullopt);
}

}  // namespace
}  // namespace platform
