#include "Platform/MacOS/Tasks/NSTaskLauncher.h"

#import <Foundation/Foundation.h>

#include "Platform/MacOS/Tasks/PipedTask.h"
#include "Platform/MacOS/Text/NSText.h"

namespace platform {
namespace {

NSArray<NSString*>* nsStrings(const std::vector<std::string>& texts) {
  NSMutableArray<NSString*>* strings = [NSMutableArray arrayWithCapacity:texts.size()];
  for (const std::string& text : texts) {
    [strings addObject:nsString(text)];
  }
  return strings;
}

NSTask* makeTask(const std::string& executable, const std::vector<std::string>& arguments,
                 NSPipe* output) {
  NSTask* task = [[NSTask alloc] init];
  task.executableURL = [NSURL fileURLWithPath:nsString(executable) isDirectory:NO];
  task.arguments = nsStrings(arguments);
  task.standardInput = NSFileHandle.fileHandleWithNullDevice;
  task.standardOutput = output;
  task.standardError = NSFileHandle.fileHandleWithNullDevice;
  return task;
}

}  // namespace

tidewell::TaskLauncher::Launch NSTaskLauncher::launch(const std::string& executable,
                                                      const std::vector<std::string>& arguments) {
  @autoreleasepool {
    NSPipe* output = [NSPipe pipe];
    NSPipe* wake = [NSPipe pipe];
    if (output == nil || wake == nil) return {nullptr, "no descriptors are left for a pipe"};
    NSTask* task = makeTask(executable, arguments, output);
    NSError* error = nil;
    if (![task launchAndReturnError:&error]) return {nullptr, utf8(error.localizedDescription)};
    return {std::make_unique<PipedTask>(task, output, wake), ""};
  }
}

}  // namespace platform
