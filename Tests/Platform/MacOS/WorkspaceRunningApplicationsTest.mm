// The applications of this session, beside what the workspace says of them.

#include "Platform/MacOS/Applications/WorkspaceRunningApplications.h"

#import <AppKit/AppKit.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "Platform/MacOS/Text/NSText.h"

namespace platform {
namespace {

using Application = std::shared_ptr<const tidewell::RunningApplication>;

const Application* find(const std::vector<Application>& all, pid_t pid) {
  const auto found =
      std::ranges::find(all, pid, [](const Application& one) { return one->processIdentifier(); });
  return found == all.end() ? nullptr : &*found;
}

/// Applications that have both a name and an identifier; they stay while the test runs.
NSArray<NSRunningApplication*>* known() {
  NSPredicate* isKnown = [NSPredicate
      predicateWithFormat:@"bundleIdentifier != nil AND localizedName != nil AND terminated == NO"];
  return [NSWorkspace.sharedWorkspace.runningApplications filteredArrayUsingPredicate:isKnown];
}

TEST(WorkspaceRunningApplications, AreThoseOfTheWorkspaceWithNameAndIdentifier) {
  if (known().count == 0) GTEST_SKIP() << "no session with applications";
  const auto all = WorkspaceRunningApplications().all();
  for (NSRunningApplication* application in known()) {
    const Application* found = find(all, application.processIdentifier);
    ASSERT_NE(found, nullptr) << utf8(application.localizedName);
    EXPECT_EQ((*found)->bundleIdentifier(), utf8(application.bundleIdentifier));
    EXPECT_EQ((*found)->localizedName(), utf8(application.localizedName));
  }
}

TEST(WorkspaceRunningApplications, HaveTheSameObjectOnEachLook) {
  if (known().count == 0) GTEST_SKIP() << "no session with applications";
  WorkspaceRunningApplications applications;
  const auto first = applications.all();
  const auto second = applications.all();
  const pid_t pid = known().firstObject.processIdentifier;
  ASSERT_NE(find(first, pid), nullptr);
  ASSERT_NE(find(second, pid), nullptr);
  EXPECT_EQ(*find(first, pid), *find(second, pid));
}

TEST(WorkspaceRunningApplications, NameASingleProcessOrNone) {
  WorkspaceRunningApplications applications;
  EXPECT_EQ(applications.withProcessIdentifier(-5), nullptr);
  EXPECT_EQ(applications.withProcessIdentifier(1), nullptr) << "of the system's first process";
  if (known().count == 0) GTEST_SKIP() << "no session with applications";
  NSRunningApplication* application = known().firstObject;
  const auto found = applications.withProcessIdentifier(application.processIdentifier);
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->bundleIdentifier(), utf8(application.bundleIdentifier));
}

}  // namespace
}  // namespace platform
