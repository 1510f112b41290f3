#include "Staylit/AppKit/Status/StatusQuestion.h"

#import <Foundation/Foundation.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Platform/MacOS/CoreFoundation/CFRef.h"
#include "Platform/MacOS/Text/NSText.h"
#include "Staylit/AppKit/Status/AppKitStatusService.h"
#include "Staylit/StaylitEngine.h"
#include "Tidewell/ForeignText.h"

namespace staylit {
namespace {

using tidewell::WallTime;

constexpr CFTimeInterval kPatience = 10;

/// The value of `key` if it is of the kind that is wanted, else nil.
template <typename Kind>
Kind* member(NSDictionary* object, NSString* key, Class kind) {
  const id value = object[key];
  return [value isKindOfClass:kind] ? static_cast<Kind*>(value) : nil;
}

std::string text(NSDictionary* object, NSString* key) {
  return platform::cleanedIfAny(member<NSString>(object, key, NSString.class)).value_or("");
}

/// 0 for what is no number, and for what is beyond any length of time.
double number(NSDictionary* object, NSString* key) {
  constexpr double kBeyondMeaning = 1e15;
  const double value = member<NSNumber>(object, key, NSNumber.class).doubleValue;
  return std::abs(value) < kBeyondMeaning ? value : 0;
}

bool flag(NSDictionary* object, NSString* key) {
  return member<NSNumber>(object, key, NSNumber.class).boolValue;
}

std::optional<WallTime> time(NSDictionary* object, NSString* key) {
  // Nanoseconds in 64 bits reach as far as the year 2262.
  constexpr double kLatest = 9'200'000'000;
  NSString* written = member<NSString>(object, key, NSString.class);
  NSDate* date = written == nil ? nil : [[NSISO8601DateFormatter new] dateFromString:written];
  if (date == nil) return std::nullopt;
  const double seconds = std::clamp(date.timeIntervalSince1970, 0.0, kLatest);
  return WallTime(std::chrono::seconds(static_cast<std::int64_t>(seconds)));
}

std::vector<std::string> texts(NSDictionary* object, NSString* key) {
  std::vector<std::string> all;
  for (id each in member<NSArray>(object, key, NSArray.class)) {
    if (![each isKindOfClass:NSString.class]) continue;
    all.push_back(tidewell::cleaned(platform::utf8(static_cast<NSString*>(each))));
  }
  return all;
}

template <typename Element, typename Read>
std::vector<Element> eachOf(NSDictionary* object, NSString* key, Read read) {
  std::vector<Element> all;
  for (id each in member<NSArray>(object, key, NSArray.class)) {
    if ([each isKindOfClass:NSDictionary.class])
      all.push_back(read(static_cast<NSDictionary*>(each)));
  }
  return all;
}

std::vector<tidewell::BusyApp> apps(NSDictionary* object, NSString* key, NSString* duration) {
  return eachOf<tidewell::BusyApp>(object, key, [duration](NSDictionary* each) {
    tidewell::BusyApp app;
    app.id = text(each, @"id");
    app.display = text(each, @"name");
    app.cpuPercent = number(each, @"cpuPercent");
    app.diskKBps = number(each, @"diskKBps");
    app.netKBps = number(each, @"netKBps");
    app.busyFor = number(each, duration);
    return app;
  });
}

std::int64_t neededSeconds(NSDictionary* object) {
  NSArray* candidates = member<NSArray>(object, @"candidates", NSArray.class);
  const id first = candidates.firstObject;
  if (![first isKindOfClass:NSDictionary.class]) return 0;
  return static_cast<std::int64_t>(number(static_cast<NSDictionary*>(first), @"neededSeconds"));
}

tidewell::PowerState power(NSDictionary* object) {
  NSDictionary* told = member<NSDictionary>(object, @"power", NSDictionary.class);
  return {flag(told, @"onAC"), static_cast<std::int64_t>(number(told, @"batteryPercent")),
          flag(told, @"lowPowerMode"), flag(told, @"hasBattery")};
}

std::optional<StatusReport> readStatus(NSData* data) {
  const id json = [NSJSONSerialization JSONObjectWithData:data options:0 error:nil];
  if (![json isKindOfClass:NSDictionary.class]) return std::nullopt;
  NSDictionary* object = static_cast<NSDictionary*>(json);
  const auto state = stateNamed(text(object, @"state"));
  if (!state) return std::nullopt;
  StatusReport report;
  report.state = *state;
  report.summary = text(object, @"summary");
  report.since = time(object, @"since").value_or(WallTime());
  report.reason = text(object, @"reason");
  report.releasesIn = static_cast<std::int64_t>(number(object, @"releasesInSeconds"));
  report.names = texts(object, @"names");
  report.services = eachOf<StatusReport::Service>(object, @"services", [](NSDictionary* each) {
    return StatusReport::Service{text(each, @"name"), time(each, @"seenAt")};
  });
  report.busy = apps(object, @"busy", @"busyForSeconds");
  report.candidates = apps(object, @"candidates", @"overForSeconds");
  report.sustainSeconds = neededSeconds(object);
  report.asking = texts(object, @"asking");
  report.power = power(object);
  return report;
}

void ask(StatusPrinter& printer) {
  const auto port = platform::CFRef<CFMessagePortRef>::adopt(
      CFMessagePortCreateRemote(kCFAllocatorDefault, AppKitStatusService::portName()));
  if (!port) return printer.foundNone();
  CFDataRef data = nullptr;
  const SInt32 result = CFMessagePortSendRequest(port.get(), 0, nullptr, kPatience, kPatience,
                                                 kCFRunLoopDefaultMode, &data);
  const auto answer = platform::CFRef<CFDataRef>::adopt(data);
  if (result != kCFMessagePortSuccess || !answer) {
    return printer.failed("the Staylit that runs does not answer");
  }
  const auto report = readStatus((__bridge NSData*)answer.get());
  if (!report) return printer.failed("the Staylit that runs answered what cannot be read");
  printer.answered(*report);
}

bool isReaderGone() {
  pollfd output{STDOUT_FILENO, 0, 0};
  return ::poll(&output, 1, 0) > 0 && (output.revents & (POLLERR | POLLHUP)) != 0;
}

}  // namespace

int tellStatus(const StatusRequest& request, tidewell::Console& console, tidewell::Clock& clock) {
  StatusPrinter printer(request, console, clock);
  do {
    @autoreleasepool {
      ask(printer);
    }
    if (request.follows) clock.sleepFor(StaylitEngine::kInterval);
  } while (request.follows && !isReaderGone());
  return printer.exitStatus();
}

}  // namespace staylit
