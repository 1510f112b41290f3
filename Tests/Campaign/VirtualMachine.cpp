#include "Tests/Campaign/VirtualMachine.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <map>

#include "Staylit/Prefs.h"
#include "Staylit/WatchList.h"

namespace staylit::campaign {

namespace {

constexpr std::int64_t kNanosPerSecond = 1'000'000'000;
constexpr std::int64_t kNanosPerMillisecond = 1'000'000;

std::string textOf(const EngineStatus& status) {
  if (const auto* holding = std::get_if<EngineStatus::Holding>(&status.value)) {
    std::string text = "holding:";
    for (const std::string& name : holding->names)
      text += " [" + name + "]";
    return text;
  }
  if (const auto* winding = std::get_if<EngineStatus::Winding>(&status.value)) {
    return "winding: " + std::to_string(winding->secondsLeft);
  }
  if (const auto* blocked = std::get_if<EngineStatus::Blocked>(&status.value)) {
    return "blocked: " + blocked->reason;
  }
  return std::holds_alternative<EngineStatus::Paused>(status.value) ? "paused" : "idle";
}

std::string textOf(const std::vector<std::string>& texts) {
  std::string all;
  for (const std::string& text : texts)
    all += "[" + text + "]";
  return all;
}

std::string textOf(const NaiveApp& app) {
  return app.id + "/" + app.display + "/" + app.category + "/" + std::to_string(app.cpu) + "/" +
         std::to_string(app.disk) + "/" + std::to_string(app.net) + "/" +
         std::to_string(app.busyFor);
}

NaiveApp naive(const tidewell::BusyApp& app) {
  return {app.id,         app.display,  std::string(tidewell::rawValue(app.category)),
          app.cpuPercent, app.diskKBps, app.netKBps,
          app.busyFor};
}

std::string textOf(std::vector<NaiveApp> apps, bool sorted) {
  if (sorted) std::ranges::sort(apps, {}, &NaiveApp::id);
  std::string all;
  for (const NaiveApp& app : apps)
    all += "[" + textOf(app) + "]";
  return all;
}

std::vector<NaiveApp> naive(const std::vector<tidewell::BusyApp>& apps) {
  std::vector<NaiveApp> all;
  for (const tidewell::BusyApp& app : apps)
    all.push_back(naive(app));
  return all;
}

std::optional<std::string> differs(const std::string& what, const std::string& program,
                                   const std::string& rules) {
  if (program == rules) return std::nullopt;
  return what + " is '" + program + "', by the rules '" + rules + "'";
}

}  // namespace

/// What a process may be, with the name that it has by the rules.
struct VirtualMachine::Program {
  const char* path;
  const char* executable;
  bool hasApplication;
  const char* bundle;
  const char* localizedName;
};

struct VirtualMachine::Process {
  std::int32_t pid = 0;
  const Program* program = nullptr;
  std::uint64_t cpu = 0;
  std::uint64_t disk = 0;
  std::uint64_t net = 0;
  // How hard it works now.
  double cpuPercent = 0;
  double diskKBps = 0;
  double netKBps = 0;
};

VirtualMachine::VirtualMachine(std::uint64_t seed)
    : random_(seed),
      countsWhole_(seed % 2 == 1),
      fakes_(countsWhole_ ? tidewell::Composition::shipped : tidewell::Composition::bare),
      rules_(countsWhole_) {
  for (int count = 0; count < 4; ++count)
    begin(kNanosPerSecond);
  showProcesses();
  changePower();
  engine_ = std::make_unique<StaylitEngine>(fakes_.ports);
  engine_->start();
  runIsUnderWay_ = true;
  rules_.tick(look(), busyIds());
}

VirtualMachine::~VirtualMachine() = default;

bool VirtualMachine::happens(double probability) {
  return static_cast<double>(random_() >> 11) * 0x1.0p-53 < probability;
}

std::optional<std::string> VirtualMachine::step() {
  const std::int64_t interval = nextInterval();
  awakeNanos_ += interval;
  letTimePass(interval);
  if (happens(0.05)) changePower();
  if (happens(0.02)) changeSettings();
  if (happens(0.02)) changeAssertions();
  if (happens(0.95)) finishNetworkRun();
  if (happens(0.01)) {
    const std::array<double, 6> steps{-1, 60, -3600, 86'400, -3e8, 3e8};
    fakes_.clock.stepWallTime(tidewell::Seconds(steps[pick(steps.size())]));
  }
  if (happens(0.002)) sleepAndWake();
  if (happens(0.003) || (rules_.isPaused && happens(0.05))) {
    pauseBoth(happens(0.8) ? !rules_.isPaused : rules_.isPaused);
    if (const auto difference = compare()) return difference;
  }
  tickBoth();
  return compare();
}

std::int64_t VirtualMachine::nextInterval() {
  constexpr std::int64_t kTick = 2 * kNanosPerSecond;
  if (happens(0.7)) return kTick;
  if (happens(0.96)) return kTick + static_cast<std::int64_t>(pick(500)) * kNanosPerMillisecond;
  // Now and then a tick comes late, or two ticks come at once.
  return any<std::int64_t>({1, 50 * kNanosPerMillisecond, 200 * kNanosPerMillisecond,
                            200 * kNanosPerMillisecond + 1, 201 * kNanosPerMillisecond,
                            500 * kNanosPerMillisecond, 5 * kNanosPerSecond, 30 * kNanosPerSecond,
                            120 * kNanosPerSecond - 1, 120 * kNanosPerSecond,
                            120 * kNanosPerSecond + 1, 900 * kNanosPerSecond});
}

void VirtualMachine::letTimePass(std::int64_t nanos) {
  nanos_ += nanos;
  fakes_.clock.advance(std::chrono::nanoseconds(nanos));
  changeProcesses(nanos);
}

void VirtualMachine::changeProcesses(std::int64_t nanos) {
  const double seconds = static_cast<double>(nanos) / 1e9;
  for (Process& process : processes_) {
    process.cpu += static_cast<std::uint64_t>(process.cpuPercent / 100 * seconds * 1e9 + 0.5);
    process.disk += static_cast<std::uint64_t>(process.diskKBps * 1024 * seconds + 0.5);
    process.net += static_cast<std::uint64_t>(process.netKBps * 1024 * seconds + 0.5);
    // This is so rare that runs over a threshold last.
    if (happens(0.02)) setMode(process);
  }
  if (!processes_.empty() && happens(0.02)) {
    const auto ended = processes_.begin() + static_cast<std::ptrdiff_t>(pick(processes_.size()));
    processes_.erase(ended);
  }
  if (processes_.size() < 8 && happens(0.02)) begin(nanos);
  showProcesses();
}

void VirtualMachine::showProcesses() {
  fakes_.processes.rows.clear();
  for (const Process& process : processes_) {
    auto& row = fakes_.processes.add(process.pid, process.program->path);
    row.usage.userTime = process.cpu;
    row.usage.diskBytesRead = process.disk;
    row.usage.startTime = static_cast<std::uint64_t>(process.pid);
  }
  fakes_.processes.usageAsked.clear();
  fakes_.processes.pathAsked.clear();
  fakes_.processes.bufferLengths.clear();
  fakes_.calls->clear();
}

void VirtualMachine::begin(std::int64_t nanos) {
  static constexpr Program kPrograms[] = {
      {"/usr/bin/ffmpeg", "ffmpeg", false, nullptr, nullptr},
      {"/usr/bin/FFmpeg", "FFmpeg", false, nullptr, nullptr},
      {"/usr/bin/claude", "claude", false, nullptr, nullptr},
      {"/usr/bin/make", "make", false, nullptr, nullptr},
      {"/usr/bin/curl", "curl", false, nullptr, nullptr},
      {"/usr/bin/rsync", "rsync", false, nullptr, nullptr},
      {"/opt/tool", "tool", false, nullptr, nullptr},
      {"/opt/Tool", "Tool", false, nullptr, nullptr},
      {"/opt/tool", "tool", true, nullptr, "A Tool"},
      {"/Applications/Film Cutter.app/Contents/MacOS/cut", "Film Cutter", false, nullptr, nullptr},
      {"/opt/editor/editor", "editor", true, "org.example.editor", "Editor"},
      {"/opt/editor/node", "node", true, "org.example.editor", "Editor"},
      {"/opt/editor/helper", "helper", true, "org.example.editor", nullptr},
      {"/opt/xcode", "xcode", true, "com.apple.dt.Xcode", "Xcode-beta"},
      {"/opt/xcode", "xcode", true, "COM.APPLE.DT.XCODE", "XCODE"},
      {"/opt/firefox", "firefox", true, "org.mozilla.firefox", "Firefox"},
      {"/opt/ollama", "ollama", true, "com.electron.ollama", "Ollama"},
  };
  Process& process = processes_.emplace_back();
  process.pid = ++lastPid_;
  process.program = &kPrograms[pick(std::size(kPrograms))];
  // The process may have begun its work before this tick.
  if (happens(0.5)) process.cpu = static_cast<std::uint64_t>(nanos) * pick(4);
  if (happens(0.2)) process.disk = static_cast<std::uint64_t>(nanos) / 1000;
  setMode(process);
  showApplications();
}

/// Decides how hard the process works from now on: not at all, hardly, hard, or close to a
/// threshold.
void VirtualMachine::setMode(Process& process) {
  process.cpuPercent =
      happens(0.5) ? 0
                   : any({0.5, 2.9, 3.0, 3.1, 5.0, 7.5, 8.0, 14.9, 15.0, 15.1, 50.0, 100.0, 380.0});
  process.diskKBps = happens(0.8) ? 0 : any({1.0, 250.0, 499.5, 500.0, 500.5, 90'000.0});
  process.netKBps = happens(0.8) ? 0 : any({1.0, 50.0, 99.5, 100.0, 100.5, 40'000.0});
}

void VirtualMachine::showApplications() {
  fakes_.applications.clear();
  const auto text = [](const char* value) {
    return value ? std::optional<std::string>(value) : std::nullopt;
  };
  for (const Process& process : processes_) {
    const Program& program = *process.program;
    if (program.hasApplication) {
      fakes_.applications.add(process.pid, text(program.bundle), text(program.localizedName));
    }
  }
  for (const NaiveAssertion& assertion : assertions_) {
    if (assertion.hasApplication) {
      fakes_.applications.add(static_cast<std::int32_t>(assertion.pid), assertion.bundle,
                              assertion.localizedName);
    }
  }
}

void VirtualMachine::changePower() {
  battery_.isThere = happens(0.8);
  battery_.isOnMains = happens(0.6);
  battery_.charge = any<std::int64_t>({0, 5, 19, 20, 21, 49, 50, 80, 100});
  fakes_.powerSources.current.reset();
  if (battery_.isThere) {
    fakes_.powerSources.current = tidewell::PowerSource{battery_.isOnMains, battery_.charge};
  }
  fakes_.powerSources.lowPowerMode = happens(0.1);
  // The services that grant holds may fail as well.
  fakes_.power.systemFailure = happens(0.05) ? any({-5, -110, 3}) : 0;
  fakes_.power.displayFailure = happens(0.1) ? -5 : 0;
  fakes_.power.calls.clear();
}

void VirtualMachine::changeSettings() {
  const bool isTakenBack = happens(0.3);
  auto& stored = fakes_.defaults.stored;
  const auto set = [&](const char* key, auto& mine, auto value) {
    if (isTakenBack) {
      mine.reset();
      stored.erase(key);
    } else {
      mine = value;
      stored[key] = value;
    }
  };
  using Whole = std::int64_t;
  switch (pick(10)) {
    case 0:
      return set("graceSeconds", settings_.graceSeconds,
                 any<Whole>({-5, 0, 29, 30, 31, 60, 120, 599, 600, 601, 10'000}));
    case 1:
      return set("batteryThreshold", settings_.batteryThreshold,
                 any<Whole>({-1, 0, 20, 50, 100, 101}));
    case 2:
      return set("respectLowPower", settings_.respectLowPower, happens(0.5));
    case 3:
      return set("keepScreenOn", settings_.keepScreenOn, happens(0.5));
    case 4:
      return set("cpuThresholdPercent", settings_.cpuThresholdPercent,
                 any({-1.0, 0.0, 5.0, 15.0, 20.0, 1e9}));
    case 5:
      return set("diskThresholdKBps", settings_.diskThresholdKBps, any({0.5, 250.0, 500.0, 1e9}));
    case 6:
      return set("netThresholdKBps", settings_.netThresholdKBps, any({0.5, 50.0, 100.0, 1e9}));
    case 7:
      return set("sustainSeconds", settings_.sustainSeconds,
                 any<Whole>({-5, 0, 1, 2, 4, 10, 30, 120}));
    case 8:
      return set("honorAppAssertions", settings_.honorAppAssertions, happens(0.5));
    default: {
      // This is a click, after which the engine ticks at once.
      const std::string id = any<const char*>(
          {"tool", "ffmpeg", "org.example.editor", "Tool", "pid 7", "com.example.player", "Xcode"});
      const bool watched = happens(0.6);
      WatchList::setWatched(id, watched);
      std::vector<std::string> list = settings_.ignoredApps.value_or(std::vector<std::string>());
      std::erase(list, id);
      if (!watched) list.push_back(id);
      settings_.ignoredApps = list;
      tickBoth();
    }
  }
}

void VirtualMachine::changeAssertions() {
  static const std::vector<NaiveAssertion> kHolders = {
      {7, "", {}, false, {}, {}},
      {12, "", {}, false, {}, {}},
      {20, "", {}, true, "com.example.player", "Player"},
      {21, "", {}, true, "com.example.player", "Player"},
      {22, "", {}, true, std::nullopt, "Backup"},
      {23, "", {}, true, std::nullopt, std::nullopt},
  };
  assertions_.clear();
  fakes_.assertions.holders.clear();
  for (const NaiveAssertion& holder : kHolders) {
    if (!happens(0.15)) continue;
    NaiveAssertion assertion = holder;
    assertion.type = any<const char*>({"PreventUserIdleSystemSleep", "NoIdleSleepAssertion",
                                       "PreventSystemSleep", "PreventUserIdleDisplaySleep"});
    if (happens(0.9)) assertion.level = any<std::int64_t>({0, 1, 255});
    fakes_.assertions.holders.push_back({assertion.pid, {{assertion.type, assertion.level, ""}}});
    assertions_.push_back(assertion);
  }
  // The program's own holds never count.
  fakes_.assertions.hold(fakes_.assertions.own, "PreventUserIdleSystemSleep");
  showApplications();
}

void VirtualMachine::finishNetworkRun() {
  const bool fails = happens(0.02);
  std::map<std::int32_t, std::uint64_t> found;
  for (const Process& process : processes_)
    found[process.pid] = process.net;
  fakes_.network.setTotals({found.begin(), found.end()});
  if (fails) fakes_.network.next = {std::nullopt, "no such tool"};
  fakes_.queues.runAll();
  if (runIsUnderWay_ && !fails) networkBytes_ = found;
  if (runIsUnderWay_ && fails) rules_.log.push_back("error: nettop failed to launch: no such tool");
  runIsUnderWay_ = false;
}

void VirtualMachine::sleepAndWake() {
  fakes_.sleepNotifications.tellWillSleep();
  fakes_.mainLoop.runPosted();
  rules_.systemWillSleep();
  letTimePass(any<std::int64_t>({1, 60, 119, 3600, 8 * 3600}) * kNanosPerSecond);
  fakes_.sleepNotifications.tellDidWake();
  // After a wake the timer may fire before the engine hears of the wake.
  if (happens(0.2)) tickBoth();
  fakes_.mainLoop.runPosted();
  rules_.systemDidWake();
}

NaiveSight VirtualMachine::look() const {
  NaiveSight sight;
  sight.nanos = nanos_;
  const auto text = [](const char* value) {
    return value ? std::optional<std::string>(value) : std::nullopt;
  };
  for (const Process& process : processes_) {
    const Program& program = *process.program;
    sight.processes.push_back({process.pid, program.executable, program.hasApplication,
                               text(program.bundle), text(program.localizedName), process.cpu,
                               process.disk});
  }
  sight.networkBytes = networkBytes_;
  sight.assertions = assertions_;
  sight.battery = battery_;
  sight.lowPower = fakes_.powerSources.lowPowerMode;
  sight.settings = settings_;
  sight.systemHoldFailure = fakes_.power.systemFailure;
  sight.displayHoldFails = fakes_.power.displayFailure != 0;
  return sight;
}

std::vector<std::string> VirtualMachine::busyIds() {
  std::vector<std::string> ids;
  for (const tidewell::BusyApp& app : engine_->busyApps().get())
    ids.push_back(app.id);
  return ids;
}

void VirtualMachine::tickBoth() {
  ++ticks_;
  engine_->tick();
  if (!rules_.isPaused) runIsUnderWay_ = true;
  rules_.tick(look(), busyIds());
}

void VirtualMachine::pauseBoth(bool paused) {
  engine_->setPaused(paused);
  if (!paused) runIsUnderWay_ = true;
  rules_.setPaused(paused, look(), busyIds());
}

std::optional<std::string> VirtualMachine::compare() {
  if (auto difference = differs("the status", textOf(engine_->status().get()), rules_.status)) {
    return difference;
  }
  if (auto difference = differs("what is busy", textOf(naive(engine_->busyApps().get()), false),
                                textOf(rules_.busy, false))) {
    return difference;
  }
  if (auto difference = differs("what is over a threshold",
                                textOf(naive(engine_->monitor().lastCandidates()), true),
                                textOf(rules_.candidates, true))) {
    return difference;
  }
  if (!std::ranges::is_sorted(engine_->monitor().lastCandidates(), std::ranges::greater(),
                              &tidewell::BusyApp::cpuPercent)) {
    return "what is over a threshold is out of order";
  }
  const tidewell::PowerState power = engine_->powerState().get();
  if (!rules_.isPaused &&
      power != tidewell::PowerState{!battery_.isThere || battery_.isOnMains,
                                    battery_.isThere ? battery_.charge : 100,
                                    fakes_.powerSources.lowPowerMode, battery_.isThere}) {
    return "the power state is not that of the machine";
  }
  if (auto difference =
          differs("what asks", textOf(engine_->assertingApps().get()), textOf(rules_.asserting))) {
    return difference;
  }
  std::vector<std::string> held;
  for (const auto& [id, assertion] : fakes_.power.live)
    held.push_back((assertion.kind == tidewell::AssertionKind::display ? "display " : "system ") +
                   assertion.name);
  std::vector<std::string> expected;
  if (rules_.isHeld) expected.push_back("system " + rules_.holdName);
  if (rules_.isDisplayHeld) {
    expected.push_back("display " + rules_.displayHoldName);
  }
  return differs("what is held", textOf(held), textOf(expected));
}

std::optional<std::string> VirtualMachine::compareLogs() const {
  return differs("the log", textOf(fakes_.log.lines()), textOf(rules_.log));
}

}  // namespace staylit::campaign
