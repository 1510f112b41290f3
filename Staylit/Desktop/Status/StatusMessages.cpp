#include "Staylit/Desktop/Status/StatusMessages.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Linux/Bus/MessageReading.h"
#include "Tidewell/ForeignText.h"

namespace staylit {
namespace {

using tidewell::BusyApp;
using tidewell::cleaned;
using tidewell::WallTime;

constexpr const char* kServiceType = "(sx)";
constexpr const char* kAskingType = "(ss)";
constexpr const char* kAppType = "(sssdddd)";

std::int64_t toSeconds(WallTime time) {
  return std::chrono::floor<std::chrono::seconds>(time).time_since_epoch().count();
}

WallTime fromSeconds(std::int64_t seconds) {
  // Nanoseconds in 64 bits reach as far as the year 2262.
  constexpr std::int64_t kLatest = 9'200'000'000;
  return WallTime(std::chrono::seconds(std::clamp<std::int64_t>(seconds, 0, kLatest)));
}

int writeText(sd_bus_message* reply, const std::string& text) {
  return sd_bus_message_append(reply, "s", cleaned(text).c_str());
}

int writeFlag(sd_bus_message* reply, bool flag) {
  return sd_bus_message_append(reply, "b", flag ? 1 : 0);
}

template <typename Element, typename Append>
int writeEach(sd_bus_message* reply, const char* type, const std::vector<Element>& elements,
              Append append) {
  int result = sd_bus_message_open_container(reply, 'a', type);
  for (const Element& element : elements) {
    if (result >= 0) result = append(element);
  }
  return result < 0 ? result : sd_bus_message_close_container(reply);
}

int writeTexts(sd_bus_message* reply, const std::vector<std::string>& texts) {
  return writeEach(reply, "s", texts,
                   [reply](const std::string& text) { return writeText(reply, text); });
}

int writeServices(sd_bus_message* reply, const std::vector<StatusReport::Service>& services) {
  return writeEach(reply, kServiceType, services, [reply](const auto& service) {
    return sd_bus_message_append(reply, kServiceType, cleaned(service.name).c_str(),
                                 service.seenAt ? toSeconds(*service.seenAt) : 0);
  });
}

int writeApps(sd_bus_message* reply, const std::vector<BusyApp>& apps) {
  return writeEach(reply, kAppType, apps, [reply](const BusyApp& app) {
    return sd_bus_message_append(reply, kAppType, cleaned(app.id).c_str(),
                                 cleaned(app.display).c_str(), app.reason().c_str(), app.cpuPercent,
                                 app.diskKBps, app.netKBps, app.busyFor);
  });
}

int writeAsking(sd_bus_message* reply, const std::vector<tidewell::AskingProgram>& programs) {
  return writeEach(reply, kAskingType, programs, [reply](const auto& program) {
    return sd_bus_message_append(reply, kAskingType, cleaned(program.name).c_str(),
                                 cleaned(program.words).c_str());
  });
}

/// Reads a variant of type `type` through `read`. Returns 1 when it has, 0 when the variant holds
/// something else.
template <typename Read>
int readVariant(sd_bus_message* message, const char* type, Read read) {
  const char* contents = nullptr;
  int result = sd_bus_message_peek_type(message, nullptr, &contents);
  if (result < 0) return result;
  if (contents == nullptr || std::string_view(contents) != type) return 0;
  result = sd_bus_message_enter_container(message, 'v', type);
  if (result >= 0) result = read();
  if (result >= 0) result = sd_bus_message_exit_container(message);
  return result < 0 ? result : 1;
}

int readText(sd_bus_message* message, std::string& text) {
  return readVariant(message, "s", [&] {
    const char* value = nullptr;
    const int result = sd_bus_message_read(message, "s", &value);
    if (result >= 0) text = cleaned(value);
    return result;
  });
}

int readFlag(sd_bus_message* message, bool& flag) {
  return readVariant(message, "b", [&] {
    int value = 0;
    const int result = sd_bus_message_read(message, "b", &value);
    if (result >= 0) flag = value != 0;
    return result;
  });
}

int readNumber(sd_bus_message* message, std::int64_t& number) {
  return readVariant(message, "x", [&] { return sd_bus_message_read(message, "x", &number); });
}

int readCleanTexts(sd_bus_message* message, std::vector<std::string>& texts) {
  const int result = platform::readTextsValue(message, texts);
  for (std::string& text : texts)
    text = cleaned(text);
  return result;
}

int readServices(sd_bus_message* message, std::vector<StatusReport::Service>& services) {
  return readVariant(message, "a(sx)", [&] {
    int result = sd_bus_message_enter_container(message, 'a', kServiceType);
    const char* name = nullptr;
    std::int64_t seconds = 0;
    while (result >= 0 &&
           (result = sd_bus_message_read(message, kServiceType, &name, &seconds)) > 0) {
      services.push_back(
          {cleaned(name), seconds > 0 ? std::optional(fromSeconds(seconds)) : std::nullopt});
    }
    return result < 0 ? result : sd_bus_message_exit_container(message);
  });
}

int readAsking(sd_bus_message* message, std::vector<tidewell::AskingProgram>& programs) {
  return readVariant(message, "a(ss)", [&] {
    int result = sd_bus_message_enter_container(message, 'a', kAskingType);
    const char* name = nullptr;
    const char* words = nullptr;
    while (result >= 0 && (result = sd_bus_message_read(message, kAskingType, &name, &words)) > 0) {
      programs.push_back({cleaned(name), cleaned(words)});
    }
    return result < 0 ? result : sd_bus_message_exit_container(message);
  });
}

int readApps(sd_bus_message* message, std::vector<BusyApp>& apps) {
  return readVariant(message, "a(sssdddd)", [&] {
    int result = sd_bus_message_enter_container(message, 'a', kAppType);
    const char* id = nullptr;
    const char* name = nullptr;
    const char* doing = nullptr;
    BusyApp app;
    while (result >= 0 &&
           (result = sd_bus_message_read(message, kAppType, &id, &name, &doing, &app.cpuPercent,
                                         &app.diskKBps, &app.netKBps, &app.busyFor)) > 0) {
      app.id = cleaned(id);
      app.display = cleaned(name);
      apps.push_back(app);
    }
    return result < 0 ? result : sd_bus_message_exit_container(message);
  });
}

int readState(sd_bus_message* message, std::optional<StatusReport::State>& state) {
  std::string name;
  const int result = readText(message, name);
  state = stateNamed(name);
  return result;
}

}  // namespace

int appendStatusProperty(sd_bus_message* reply, std::string_view name, const StatusReport& report) {
  if (name == "State") return writeText(reply, std::string(nameOf(report.state)));
  if (name == "Summary") return writeText(reply, report.summary);
  if (name == "Held") return writeFlag(reply, report.isHeld());
  if (name == "Reason") return writeText(reply, report.reason);
  if (name == "Since") return sd_bus_message_append(reply, "x", toSeconds(report.since));
  if (name == "ReleasesIn") return sd_bus_message_append(reply, "x", report.releasesIn);
  if (name == "ResumesAt") {
    return sd_bus_message_append(reply, "x", report.resumesAt ? toSeconds(*report.resumesAt) : 0);
  }
  if (name == "Names") return writeTexts(reply, report.names);
  if (name == "Services") return writeServices(reply, report.services);
  if (name == "Busy") return writeApps(reply, report.busy);
  if (name == "Candidates") return writeApps(reply, report.candidates);
  if (name == "SustainSeconds") return sd_bus_message_append(reply, "x", report.sustainSeconds);
  if (name == "Asking") return writeTexts(reply, report.asking);
  if (name == "AskingWords") return writeAsking(reply, report.askingWords);
  if (name == "OnAC") return writeFlag(reply, report.power.onAC);
  if (name == "HasBattery") return writeFlag(reply, report.power.hasBattery);
  if (name == "BatteryPercent") return sd_bus_message_append(reply, "x", report.power.percentage);
  if (name == "LowPowerMode") return writeFlag(reply, report.power.lowPowerMode);
  return -EINVAL;
}

bool readStatus(sd_bus_message* message, StatusReport& report) {
  std::optional<StatusReport::State> state;
  std::int64_t since = 0;
  std::int64_t resumesAt = 0;
  const int result = platform::readEntries(message, [&](const std::string& key) {
    if (key == "State") return readState(message, state);
    if (key == "Summary") return readText(message, report.summary);
    if (key == "Reason") return readText(message, report.reason);
    if (key == "Since") return readNumber(message, since);
    if (key == "ReleasesIn") return readNumber(message, report.releasesIn);
    if (key == "ResumesAt") return readNumber(message, resumesAt);
    if (key == "Names") return readCleanTexts(message, report.names);
    if (key == "Services") return readServices(message, report.services);
    if (key == "Busy") return readApps(message, report.busy);
    if (key == "Candidates") return readApps(message, report.candidates);
    if (key == "SustainSeconds") return readNumber(message, report.sustainSeconds);
    if (key == "Asking") return readCleanTexts(message, report.asking);
    if (key == "AskingWords") return readAsking(message, report.askingWords);
    if (key == "OnAC") return readFlag(message, report.power.onAC);
    if (key == "HasBattery") return readFlag(message, report.power.hasBattery);
    if (key == "BatteryPercent") return readNumber(message, report.power.percentage);
    if (key == "LowPowerMode") return readFlag(message, report.power.lowPowerMode);
    return 0;
  });
  if (result < 0 || !state) return false;
  report.state = *state;
  report.since = fromSeconds(since);
  if (resumesAt > 0) report.resumesAt = fromSeconds(resumesAt);
  return true;
}

}  // namespace staylit
