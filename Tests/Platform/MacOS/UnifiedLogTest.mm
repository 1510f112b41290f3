// What was written, as log(1) shows it.

#include "Platform/MacOS/Log/UnifiedLog.h"

#import <Foundation/Foundation.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "Platform/MacOS/Text/NSText.h"

namespace platform {
namespace {

using Texts = std::vector<std::string>;

class UnifiedLogTest : public ::testing::Test {
 protected:
  /// What log(1) prints; nil when it cannot be run, as by one who is no administrator.
  [[nodiscard]] NSData* output() const {
    NSTask* task = [[NSTask alloc] init];
    task.executableURL = [NSURL fileURLWithPath:@"/usr/bin/log"];
    task.arguments = @[
      @"show", @"--last", @"2m", @"--info", @"--style", @"ndjson", @"--predicate",
      [NSString stringWithFormat:@"subsystem == \"%@\"", nsString(subsystem)]
    ];
    NSPipe* pipe = [NSPipe pipe];
    task.standardOutput = pipe;
    task.standardError = NSFileHandle.fileHandleWithNullDevice;
    if (![task launchAndReturnError:nil]) return nil;
    NSData* data = [pipe.fileHandleForReading readDataToEndOfFile];
    [task waitUntilExit];
    return task.terminationStatus == 0 ? data : nil;
  }

  /// The values of `key` in all records of the test's own subsystem, as soon as there are so many.
  [[nodiscard]] Texts recorded(std::size_t count, NSString* key) const {
    NSDate* const end = [NSDate dateWithTimeIntervalSinceNow:60];
    Texts texts;
    while (texts.size() < count && end.timeIntervalSinceNow > 0) {
      texts.clear();
      NSString* all = [[NSString alloc] initWithData:output() encoding:NSUTF8StringEncoding];
      for (NSString* line in [all componentsSeparatedByString:@"\n"]) {
        NSData* bytes = [line dataUsingEncoding:NSUTF8StringEncoding];
        NSDictionary* record = [NSJSONSerialization JSONObjectWithData:bytes options:0 error:nil];
        id value = record[key];
        if ([value isKindOfClass:NSString.class]) {
          texts.push_back(utf8(static_cast<NSString*>(value)));
        }
      }
    }
    return texts;
  }

  const std::string subsystem = "com.staylit.tests.log" + std::to_string(getpid());
  const std::shared_ptr<tidewell::SystemLogger> logger = UnifiedLog().makeLogger(subsystem, "core");
};

TEST_F(UnifiedLogTest, HoldsEveryMessageLiterallyAndReadably) {
  if (output() == nil) GTEST_SKIP() << "log show may not be run";
  const Texts messages{"100% of %s, %n and %{private}s", "holding sleep — é", ""};
  for (const std::string& message : messages) logger->emit(tidewell::LogType::error, message);
  EXPECT_EQ(recorded(3, @"eventMessage"), messages);
  EXPECT_EQ(recorded(3, @"category"), (Texts{"core", "core", "core"}));
  EXPECT_EQ(recorded(3, @"messageType"), (Texts{"Error", "Error", "Error"}));
}

TEST_F(UnifiedLogTest, TakesTextThatIsBroken) {
  if (output() == nil) GTEST_SKIP() << "log show may not be run";
  logger->emit(tidewell::LogType::error, "a\xFFz");
  EXPECT_EQ(recorded(1, @"eventMessage"), Texts{"a\uFFFDz"});
}

TEST_F(UnifiedLogTest, IsEnabledForErrors) {
  EXPECT_TRUE(logger->isEnabled(tidewell::LogType::error));
}

}  // namespace
}  // namespace platform
