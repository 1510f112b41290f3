#include "Platform/MacOS/Tasks/AppleScriptRunner.h"

#import <Foundation/Foundation.h>

#include "Platform/MacOS/Text/NSText.h"

namespace platform {
namespace {

tidewell::PrivilegedScripts::Error errorIn(NSDictionary<NSString*, id>* details) {
  tidewell::PrivilegedScripts::Error error;
  id number = details[NSAppleScriptErrorNumber];
  if ([number isKindOfClass:NSNumber.class]) error.number = [number longLongValue];
  error.description = utf8(details.description);
  return error;
}

}  // namespace

tidewell::PrivilegedScripts::Outcome AppleScriptRunner::run(const std::string& source) {
  @autoreleasepool {
    NSAppleScript* script = [[NSAppleScript alloc] initWithSource:nsString(source)];
    if (script == nil) return {false, std::nullopt};
    NSDictionary<NSString*, id>* details = nil;
    [script executeAndReturnError:&details];
    if (details == nil) return {true, std::nullopt};
    return {true, errorIn(details)};
  }
}

}  // namespace platform
