// The workspace's notices, posted by the test itself.

#include "Platform/MacOS/Sleep/WorkspaceSleepNotifications.h"

#import <AppKit/AppKit.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace platform {
namespace {

void post(NSNotificationName name) {
  [NSWorkspace.sharedWorkspace.notificationCenter postNotificationName:name object:nil];
}

class WorkspaceSleepNotificationsTest : public ::testing::Test {
 protected:
  void observe() {
    notifications->observe(
        [this] {
          log += "sleep ";
          loop->async([this] { log += "posted "; });
        },
        [this] { log += "wake "; });
  }

  const std::shared_ptr<RunLoopMain> loop = std::make_shared<RunLoopMain>();
  std::unique_ptr<WorkspaceSleepNotifications> notifications =
      std::make_unique<WorkspaceSleepNotifications>(loop);
  std::string log;
};

TEST_F(WorkspaceSleepNotificationsTest, DoAllThatIsToBeDoneBeforeTheSystemMaySleep) {
  observe();
  post(NSWorkspaceWillSleepNotification);
  EXPECT_EQ(log, "sleep posted ");
}

TEST_F(WorkspaceSleepNotificationsTest, TellOfEveryWake) {
  observe();
  post(NSWorkspaceDidWakeNotification);
  post(NSWorkspaceDidWakeNotification);
  EXPECT_EQ(log, "wake wake ");
}

TEST_F(WorkspaceSleepNotificationsTest, TellOfNothingElse) {
  observe();
  post(NSWorkspaceScreensDidSleepNotification);
  post(NSWorkspaceSessionDidResignActiveNotification);
  EXPECT_EQ(log, "");
}

TEST_F(WorkspaceSleepNotificationsTest, TellOfNothingOnceTheyAreGone) {
  observe();
  notifications.reset();
  post(NSWorkspaceWillSleepNotification);
  post(NSWorkspaceDidWakeNotification);
  EXPECT_EQ(log, "");
}

}  // namespace
}  // namespace platform
