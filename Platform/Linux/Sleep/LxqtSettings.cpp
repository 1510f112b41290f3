#include "Platform/Linux/Sleep/LxqtSettings.h"

#include <algorithm>
#include <cstddef>
#include <functional>

#include "Platform/Linux/Files/RegularFile.h"
#include "Platform/Linux/Sleep/QtTime.h"
#include "Tidewell/TextReading.h"

namespace platform {
namespace {

constexpr const char* kFile = "lxqt/lxqt-powermanagement.conf";
constexpr std::size_t kMostBytes = 65536;
constexpr const char* kIsOn = "enableIdlenessWatcher";

/// The watcher's numbers of what it does.
constexpr long kNothing = -1;
constexpr long kLogOut = 0;
constexpr long kHibernate = 1;
constexpr long kReboot = 2;
constexpr long kTurnOff = 3;
constexpr long kSuspend = 4;

std::string keyOf(bool isOnAC, const char* what) {
  return std::string(isOnAC ? "idlenessAC" : "idlenessBattery") + what;
}

/// Takes the first line off.
std::string_view takeLine(std::string_view& text) {
  const std::string_view line = text.substr(0, text.find('\n'));
  text.remove_prefix(std::min(line.size() + 1, text.size()));
  return tidewell::trimmed(line, " \t\r");
}

}  // namespace

LxqtSettings LxqtSettings::read(const std::vector<std::filesystem::path>& folders) {
  LxqtSettings settings;
  // The most important one comes last. Clang 14 cannot read the library's reversed view.
  for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder) {
    const RegularFile file = readRegularFile(*folder / kFile, kMostBytes);
    if (file.error.empty()) settings.add(file.text);
  }
  return settings;
}

void LxqtSettings::add(std::string_view file) {
  bool isGeneral = true;
  while (!file.empty()) {
    const std::string_view line = takeLine(file);
    if (line.starts_with('[')) isGeneral = line == "[General]";
    const std::size_t sign = line.find('=');
    if (!isGeneral || sign == std::string_view::npos) continue;
    values_[std::string(tidewell::trimmed(line.substr(0, sign)))] =
        tidewell::trimmed(line.substr(sign + 1));
  }
}

LxqtSettings::Deed LxqtSettings::deed(bool isOnAC) const {
  const auto isOn = values_.find(kIsOn);
  if (isOn == values_.end() || isOn->second != "true") return Deed::none;
  switch (action(isOnAC)) {
    case kNothing:
      return Deed::none;
    case kLogOut:
    case kHibernate:
    case kReboot:
    case kTurnOff:
    case kSuspend:
      return Deed::endsWork;
    default:
      return Deed::toTheScreen;
  }
}

std::chrono::milliseconds LxqtSettings::after(bool isOnAC) const {
  const auto time = values_.find(keyOf(isOnAC, "Time"));
  if (time != values_.end()) {
    if (const auto parsed = parseQtTime(time->second)) return *parsed;
  }
  // As older versions kept it, of which newer ones take it over, within these limits.
  constexpr long kUsual = 900;
  constexpr long kLeast = 60;
  constexpr long kMost = 3599;
  return std::chrono::seconds(std::clamp(number("idlenessTimeSecs", kUsual), kLeast, kMost));
}

std::string LxqtSettings::setting(bool isOnAC) const {
  const auto isOn = values_.find(kIsOn);
  if (isOn == values_.end() || isOn->second != "true") return std::string(kIsOn) + " is false";
  return keyOf(isOnAC, "Action") + " is " + std::to_string(action(isOnAC));
}

long LxqtSettings::number(const std::string& key, long usual) const {
  const auto found = values_.find(key);
  if (found == values_.end()) return usual;
  return tidewell::wholeNumber<long>(found->second).value_or(usual);
}

long LxqtSettings::action(bool isOnAC) const {
  return number(keyOf(isOnAC, "Action"), number("idlenessAction", kNothing));
}

}  // namespace platform
