#pragma once

#import <Foundation/Foundation.h>

#include <memory>

#include "Platform/MacOS/Loop/RunLoopMain.h"
#include "Tidewell/Ports/SleepNotifications.h"

namespace platform {

/// The shared workspace's notices of sleep and wake. The system waits for its observers to return
/// before it sleeps, but not for the main queue, so what `willSleep` posted is run at once.
class WorkspaceSleepNotifications final : public tidewell::SleepNotifications {
 public:
  explicit WorkspaceSleepNotifications(std::shared_ptr<RunLoopMain> mainLoop);
  ~WorkspaceSleepNotifications() override;
  WorkspaceSleepNotifications(const WorkspaceSleepNotifications&) = delete;
  WorkspaceSleepNotifications& operator=(const WorkspaceSleepNotifications&) = delete;

  void observe(std::function<void()> willSleep, std::function<void()> didWake) override;

 private:
  void addObserver(NSNotificationName name, std::function<void()> action);

  const std::shared_ptr<RunLoopMain> mainLoop_;
  NSMutableArray<id<NSObject>>* const observers_ = [[NSMutableArray alloc] init];
};

}  // namespace platform
