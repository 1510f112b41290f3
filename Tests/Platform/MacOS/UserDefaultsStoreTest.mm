#include "Platform/MacOS/UserDefaultsStore.h"

#include <gtest/gtest.h>

#include "Tests/Platform/Settings/DefaultsContract.h"

namespace platform {
namespace {

/// A suite of the test's own, removed with all it holds. What is registered belongs to the whole
/// process, so it is forgotten as well.
struct OwnSuite {
  OwnSuite() { [store removeVolatileDomainForName:NSRegistrationDomain]; }
  ~OwnSuite() {
    [store removePersistentDomainForName:name];
    [store removeVolatileDomainForName:NSRegistrationDomain];
  }
  OwnSuite(const OwnSuite&) = delete;
  OwnSuite& operator=(const OwnSuite&) = delete;

  NSString* const name = [@"com.staylit.tests." stringByAppendingString:NSUUID.UUID.UUIDString];
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
