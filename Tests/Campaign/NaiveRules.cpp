#include "Tests/Campaign/NaiveRules.h"

#include <algorithm>
#include <cmath>

namespace staylit::campaign {
namespace {

struct NaiveEntry {
  const char* display;
  const char* category;
  std::optional<double> floor;
};

/// The part of the catalogue that occurs here, by lower-case identifier.
const std::map<std::string, NaiveEntry>& naiveBundles() {
  static const std::map<std::string, NaiveEntry> entries = {
      {"com.apple.dt.xcode", {"Xcode", "Development", 8.0}},
      {"org.mozilla.firefox", {"Firefox", "Downloads", std::nullopt}},
      {"com.electron.ollama", {"Ollama", "AI Agents", 3.0}},
  };
  return entries;
}

const std::map<std::string, NaiveEntry>& naiveExecutables() {
  static const std::map<std::string, NaiveEntry> entries = {
      {"ffmpeg", {"ffmpeg", "Video & Audio", 5.0}},
      {"claude", {"Claude Code", "AI Agents", 3.0}},
      {"make", {"make / cmake", "Development", 8.0}},
      {"node", {"npm / node", "Development", 8.0}},
      {"curl", {"curl / wget", "Downloads", std::nullopt}},
      {"rsync", {"rsync", "Sync & Backup", std::nullopt}},
  };
  return entries;
}

std::string lowerCase(std::string text) {
  for (char& letter : text) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  }
  return text;
}

const NaiveEntry* entryOf(const NaiveProcess& process) {
  if (process.bundle) {
    const auto found = naiveBundles().find(lowerCase(*process.bundle));
    if (found != naiveBundles().end()) return &found->second;
  }
  const auto found = naiveExecutables().find(lowerCase(process.executable));
  return found == naiveExecutables().end() ? nullptr : &found->second;
}

double rate(std::uint64_t now, std::uint64_t before, double seconds) {
  return now < before ? 0 : static_cast<double>(now - before) / seconds;
}

double secondsBetween(std::int64_t from, std::int64_t to) {
  return static_cast<double>(to - from) / 1e9;
}

std::string nameOf(const NaiveAssertion& assertion) {
  if (assertion.hasApplication && assertion.bundle) return *assertion.bundle;
  if (assertion.hasApplication && assertion.localizedName) return *assertion.localizedName;
  return "pid " + std::to_string(assertion.pid);
}

std::optional<std::string> blockedReason(const NaiveSight& sight) {
  if (sight.settings.respectLowPower.value_or(true) && sight.lowPower) {
    return "Low Power Mode is on";
  }
  const std::int64_t floor = sight.settings.batteryThreshold.value_or(20);
  if (!sight.battery.isThere || sight.battery.isOnMains || sight.battery.charge >= floor) {
    return std::nullopt;
  }
  return "battery below " + std::to_string(floor) + "%";
}

}  // namespace

/// The rows that count: the processes in the order in which they are listed, then the accounts.
std::vector<NaiveProcess> NaiveRules::rowsOf(const NaiveSight& sight) {
  if (!countsWhole_) return sight.processes;
  std::vector<NaiveProcess> rows = sight.processes;
  std::map<std::int32_t, NaiveProcess> seen;
  for (const NaiveProcess& process : sight.processes) {
    seen[process.pid] = process;
    accounts_.try_emplace(process.key(), Account{process, 0, 0, false});
  }
  std::set<std::string> alive;
  for (const auto& [pid, process] : seen)
    alive.insert(process.key());
  for (const auto& [pid, process] : lastSeen_) {
    if (seen.contains(pid)) continue;
    if (process.cpuNanos == 0 && process.diskBytes == 0) continue;
    Account& account = accounts_.at(process.key());
    account.cpu += process.cpuNanos;
    account.disk += process.diskBytes;
    account.hasEnded = true;
    alive.insert(process.key());
  }
  for (auto account = accounts_.begin(); account != accounts_.end();) {
    account = alive.contains(account->first) ? std::next(account) : accounts_.erase(account);
  }
  std::int32_t number = -1;
  for (const auto& [key, account] : accounts_) {
    if (!account.hasEnded) continue;
    NaiveProcess row = account.first;
    row.pid = number--;
    row.cpuNanos = account.cpu;
    row.diskBytes = account.disk;
    rows.push_back(row);
  }
  lastSeen_ = seen;
  return rows;
}

std::map<std::string, NaiveRules::Sum> NaiveRules::sumsOf(const NaiveSight& sight) {
  std::map<std::string, Sum> sums;
  for (const NaiveProcess& process : rowsOf(sight)) {
    const NaiveEntry* entry = entryOf(process);
    if (!sums.contains(process.key())) {
      Sum sum;
      const std::string own = process.hasApplication && process.localizedName
                                  ? *process.localizedName
                                  : process.executable;
      sum.display = entry ? entry->display : own;
      sum.category = entry ? entry->category : "Other";
      if (entry) sum.floor = entry->floor;
      sums[process.key()] = sum;
    }
    Sum& sum = sums[process.key()];
    sum.cpu += process.cpuNanos;
    sum.disk += process.diskBytes;
    const auto net = sight.networkBytes.find(process.pid);
    if (net != sight.networkBytes.end()) sum.net += net->second;
  }
  return sums;
}

void NaiveRules::look(const NaiveSight& sight, const std::vector<std::string>& order) {
  const std::map<std::string, Sum> current = sumsOf(sight);
  const double dt = previousAt_ ? secondsBetween(*previousAt_, sight.nanos) : 0;
  const bool isComparable = previousAt_ && dt > 0.2 && dt < 120.0;
  busy.clear();
  if (isComparable) {
    const std::vector<std::string> list =
        sight.settings.ignoredApps.value_or(std::vector<std::string>());
    const std::set<std::string> ignored(list.begin(), list.end());
    listBusy(findCandidates(sight, current, dt, ignored), order);
    asserting = sight.settings.honorAppAssertions.value_or(true) ? assertingNames(sight)
                                                                 : std::vector<std::string>();
    std::erase_if(asserting, [&](const std::string& name) { return ignored.contains(name); });
  }
  previous_ = current;
  previousAt_ = sight.nanos;
}

/// Finds what is over a threshold. Returns what has been so for long enough, by its identifier.
std::map<std::string, NaiveApp> NaiveRules::findCandidates(
    const NaiveSight& sight, const std::map<std::string, Sum>& current, double dt,
    const std::set<std::string>& ignored) {
  const NaiveSettings& settings = sight.settings;
  const auto sustain = std::max<std::int64_t>(1, settings.sustainSeconds.value_or(10));
  std::map<std::string, std::int64_t> stillBusy;
  std::map<std::string, NaiveApp> qualified;
  candidates.clear();
  for (const auto& [key, sum] : current) {
    if (ignored.contains(key) || !previous_.contains(key)) continue;
    const Sum& before = previous_.at(key);
    NaiveApp app;
    app.id = key;
    app.display = sum.display;
    app.category = sum.category;
    app.cpu = rate(sum.cpu, before.cpu, dt) / 1'000'000'000 * 100;
    app.disk = rate(sum.disk, before.disk, dt) * 1 / 1024;
    app.net = rate(sum.net, before.net, dt) * 1 / 1024;
    const double cpuLimit = sum.floor.value_or(settings.cpuThresholdPercent.value_or(15.0));
    const bool isOver = app.cpu >= cpuLimit ||
                        app.disk >= settings.diskThresholdKBps.value_or(500.0) ||
                        app.net >= settings.netThresholdKBps.value_or(100.0);
    if (!isOver) continue;
    const std::int64_t since = busySince_.contains(key) ? busySince_.at(key) : sight.nanos;
    stillBusy[key] = since;
    app.busyFor = secondsBetween(since, sight.nanos);
    candidates.push_back(app);
    if (app.busyFor >= static_cast<double>(sustain)) qualified[key] = app;
  }
  busySince_ = stillBusy;
  return qualified;
}

void NaiveRules::listBusy(std::map<std::string, NaiveApp> qualified,
                          const std::vector<std::string>& order) {
  // The applications that the program lists too come first, in its order, and then those that it
  // lacks.
  for (const std::string& id : order) {
    if (!qualified.contains(id)) continue;
    busy.push_back(qualified.at(id));
    qualified.erase(id);
  }
  for (const auto& [id, app] : qualified)
    busy.push_back(app);
  std::ranges::stable_sort(busy, [](const NaiveApp& left, const NaiveApp& right) {
    return left.cpu + left.net > right.cpu + right.net;
  });
}

std::vector<std::string> NaiveRules::assertingNames(const NaiveSight& sight) const {
  std::set<std::string> names;
  for (const NaiveAssertion& assertion : sight.assertions) {
    const bool keepsAwake = assertion.type == "PreventUserIdleSystemSleep" ||
                            assertion.type == "NoIdleSleepAssertion" ||
                            assertion.type == "PreventSystemSleep";
    if (keepsAwake && assertion.level != 0) names.insert(nameOf(assertion));
  }
  return {names.begin(), names.end()};
}

void NaiveRules::tick(const NaiveSight& sight, const std::vector<std::string>& order) {
  if (isPaused) return;
  look(sight, order);
  if (const auto reason = blockedReason(sight)) {
    release();
    quietSince_.reset();
    status = "blocked: " + *reason;
    return;
  }
  if (busy.empty() && asserting.empty()) {
    if (!quietSince_) quietSince_ = sight.nanos;
    std::int64_t grace = sight.settings.graceSeconds.value_or(120);
    if (grace < 30) grace = 30;
    if (grace > 600) grace = 600;
    const double remaining = static_cast<double>(grace) - secondsBetween(*quietSince_, sight.nanos);
    if (remaining > 0) {
      hold("waiting for work to resume", sight);
      status = "winding: " + std::to_string(static_cast<int>(std::ceil(remaining)));
    } else {
      release();
      status = "idle";
    }
    return;
  }
  quietSince_.reset();
  std::vector<std::string> names;
  for (const NaiveApp& app : busy)
    names.push_back(app.display);
  names.insert(names.end(), asserting.begin(), asserting.end());
  const std::string others = std::to_string(names.size() - 1);
  hold(names.size() == 1 ? names[0] + " is working"
                         : names[0] + " and " + others + " more are working",
       sight);
  status = "holding:";
  for (const std::string& name : names)
    status += " [" + name + "]";
}

void NaiveRules::setPaused(bool paused, const NaiveSight& sight,
                           const std::vector<std::string>& order) {
  isPaused = paused;
  if (paused) {
    release();
    quietSince_.reset();
    status = "paused";
  } else {
    forgetHistory();
    status = "idle";
    tick(sight, order);
  }
}

void NaiveRules::systemDidWake() {
  forgetHistory();
  quietSince_.reset();
}

void NaiveRules::forgetHistory() {
  previous_.clear();
  previousAt_.reset();
  busySince_.clear();
  candidates.clear();
}

void NaiveRules::hold(const std::string& reason, const NaiveSight& sight) {
  if (!isHeld) {
    if (sight.systemHoldFailure != 0) {
      log.push_back("error: failed to create sleep assertion: " +
                    std::to_string(sight.systemHoldFailure));
      return;
    }
    isHeld = true;
    log.push_back("info: holding sleep \u2014 " + reason);
  }
  holdName = reason;
  const bool wanted = sight.settings.keepScreenOn.value_or(false);
  if (wanted && !isDisplayHeld && !sight.displayHoldFails) {
    isDisplayHeld = true;
    displayHoldName = reason;
  }
  if (!wanted) isDisplayHeld = false;
}

void NaiveRules::release() {
  if (isHeld) log.push_back("info: released sleep hold");
  isHeld = false;
  isDisplayHeld = false;
}

}  // namespace staylit::campaign
