#include "Platform/MacOS/Sleep/WorkspaceSleepNotifications.h"

#import <AppKit/AppKit.h>

#include <utility>

namespace platform {

WorkspaceSleepNotifications::WorkspaceSleepNotifications(std::shared_ptr<RunLoopMain> mainLoop)
    : mainLoop_(std::move(mainLoop)) {}

WorkspaceSleepNotifications::~WorkspaceSleepNotifications() {
  @autoreleasepool {
    for (id<NSObject> observer in observers_) {
      [NSWorkspace.sharedWorkspace.notificationCenter removeObserver:observer];
    }
  }
}

void WorkspaceSleepNotifications::observe(std::function<void()> willSleep,
                                          std::function<void()> didWake) {
  @autoreleasepool {
    addObserver(NSWorkspaceWillSleepNotification,
                [mainLoop = mainLoop_, willSleep = std::move(willSleep)] {
                  willSleep();
                  mainLoop->runPending();
                });
    addObserver(NSWorkspaceDidWakeNotification, std::move(didWake));
  }
}

void WorkspaceSleepNotifications::addObserver(NSNotificationName name,
                                              std::function<void()> action) {
  const auto shared = std::make_shared<const std::function<void()>>(std::move(action));
  id<NSObject> observer =
      [NSWorkspace.sharedWorkspace.notificationCenter addObserverForName:name
                                                                  object:nil
                                                                   queue:NSOperationQueue.mainQueue
                                                              usingBlock:^(NSNotification*) {
                                                                @autoreleasepool {
                                                                  (*shared)();
                                                                }
                                                              }];
  [observers_ addObject:observer];
}

}  // namespace platform
