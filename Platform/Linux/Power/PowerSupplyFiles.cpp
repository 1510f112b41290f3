#include "Platform/Linux/Power/PowerSupplyFiles.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include "Tidewell/TextReading.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

/// The present and the full contents of a battery. Only contents of one kind can be added up.
struct Contents {
  enum class Kind { energy, charge };
  Kind kind;
  double now;
  double full;
};

struct Battery {
  bool isDischarging = false;
  std::optional<Contents> contents;
  std::optional<double> percentage;
};

struct Supplies {
  std::vector<Battery> batteries;
  bool anyAdapterOnline = false;
  bool mainsOffline = false;
};

std::string readLine(const fs::path& file) {
  std::ifstream stream(file);
  std::string line;
  std::getline(stream, line);
  while (!line.empty() && (line.back() == ' ' || line.back() == '\r'))
    line.pop_back();
  return line;
}

std::optional<std::int64_t> readNumber(const fs::path& file) {
  const auto value = tidewell::wholeNumber<std::int64_t>(readLine(file));
  return value && *value >= 0 ? value : std::nullopt;
}

std::optional<Contents> readContents(const fs::path& supply, Contents::Kind kind,
                                     const std::string& prefix) {
  const auto now = readNumber(supply / (prefix + "_now"));
  const auto full = readNumber(supply / (prefix + "_full"));
  if (!now || !full || *full < 1) return std::nullopt;
  return Contents{kind, static_cast<double>(*now), static_cast<double>(*full)};
}

Battery readBattery(const fs::path& supply) {
  Battery battery;
  battery.isDischarging = readLine(supply / "status") == "Discharging";
  battery.contents = readContents(supply, Contents::Kind::energy, "energy");
  if (!battery.contents) {
    battery.contents = readContents(supply, Contents::Kind::charge, "charge");
  }
  if (battery.contents) {
    battery.percentage = battery.contents->now * 100 / battery.contents->full;
  } else if (const auto capacity = readNumber(supply / "capacity")) {
    battery.percentage = static_cast<double>(*capacity);
  }
  return battery;
}

void readSupply(const fs::path& supply, Supplies& supplies) {
  if (readLine(supply / "scope") == "Device") return;
  const std::string type = readLine(supply / "type");
  if (type == "Battery" || type == "UPS") {
    if (readNumber(supply / "present") != 0) supplies.batteries.push_back(readBattery(supply));
  } else if (type == "Mains" || type == "USB" || type == "Wireless") {
    const auto online = readNumber(supply / "online");
    if (online && *online > 0) supplies.anyAdapterOnline = true;
    if (online == 0 && type == "Mains") supplies.mainsOffline = true;
  }
}

/// The percentage of the summed contents. Absent unless all contents are of one kind.
std::optional<double> percentageByContents(const std::vector<Battery>& batteries) {
  double now = 0;
  double full = 0;
  for (const Battery& battery : batteries) {
    if (!battery.contents || battery.contents->kind != batteries.front().contents->kind) {
      return std::nullopt;
    }
    now += battery.contents->now;
    full += battery.contents->full;
  }
  return now * 100 / full;
}

std::optional<double> percentage(std::vector<Battery> batteries) {
  std::erase_if(batteries, [](const Battery& battery) { return !battery.percentage; });
  if (batteries.empty()) return std::nullopt;
  std::optional<double> result = percentageByContents(batteries);
  if (!result) {
    double sum = 0;
    for (const Battery& battery : batteries)
      sum += *battery.percentage;
    result = sum / static_cast<double>(batteries.size());
  }
  return std::min(*result, 100.0);
}

bool isOnBattery(const Supplies& supplies) {
  if (supplies.batteries.empty() || supplies.anyAdapterOnline) return false;
  const bool discharging =
      std::any_of(supplies.batteries.begin(), supplies.batteries.end(),
                  [](const Battery& battery) { return battery.isDischarging; });
  // Even if no supply is an adapter, a battery that does not discharge gets power from somewhere.
  return discharging || supplies.mainsOffline;
}

}  // namespace

std::optional<PowerSituation> readPowerSupplies(const fs::path& root) {
  std::error_code error;
  fs::directory_iterator entry(root, error);
  if (error) return std::nullopt;
  Supplies supplies;
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    readSupply(entry->path(), supplies);
  }
  return PowerSituation{!supplies.batteries.empty(), isOnBattery(supplies),
                        percentage(supplies.batteries)};
}

}  // namespace platform
