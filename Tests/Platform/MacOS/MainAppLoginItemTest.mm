// The login item of a program that is no application. That of the application is in the checklist
// for people.

#include "Platform/MacOS/Settings/MainAppLoginItem.h"

#import <ServiceManagement/ServiceManagement.h>
#include <gtest/gtest.h>

namespace platform {
namespace {

bool isRegistered() {
  const SMAppServiceStatus status = SMAppService.mainAppService.status;
  return status == SMAppServiceStatusEnabled || status == SMAppServiceStatusRequiresApproval;
}

TEST(MainAppLoginItem, IsTakenAwayWithSuccessWhenItIsNotThere) {
  ASSERT_FALSE(isRegistered());
  MainAppLoginItem item;
  EXPECT_EQ(item.unregisterItem(), std::nullopt);
  EXPECT_EQ(item.unregisterItem(), std::nullopt);
}

TEST(MainAppLoginItem, SaysWhyItCannotBeRegisteredOrIsThereThen) {
  MainAppLoginItem item;
  const auto why = item.registerItem();
  EXPECT_EQ(!why.has_value(), isRegistered());
  if (why) EXPECT_NE(*why, "");
  EXPECT_EQ(item.unregisterItem(), std::nullopt);
  EXPECT_FALSE(isRegistered());
}

}  // namespace
}  // namespace platform
