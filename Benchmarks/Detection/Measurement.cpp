#include "Benchmarks/Detection/Measurement.h"

#include <thread>
#include <utility>

#include "Benchmarks/Detection/PlainPorts.h"
#include "Platform/Linux/LinuxPorts.h"
#include "Staylit/Prefs.h"
#include "Tests/Fakes/FakeAssertionTable.h"
#include "Tests/Fakes/FakeConsole.h"
#include "Tests/Fakes/FakeDefaults.h"
#include "Tests/Fakes/FakePowerSources.h"
#include "Tests/Fakes/FakeSleepNotifications.h"
#include "Tests/Fakes/FakeSystemLog.h"

namespace {

using tidewell::Seconds;

constexpr Seconds kStep{0.1};
constexpr Seconds kSlack{10};

std::shared_ptr<platform::EventLoop> makeLoop() {
  auto loop = std::make_shared<platform::EventLoop>();
  // Before there is any other thread.
  loop->watchTerminationSignals([loop = loop.get()] { loop->stop(1); });
  return loop;
}

/// The program as it is, on a machine with nothing to say: no battery, nobody else who holds it
/// awake, settings that nobody changed.
std::unique_ptr<tidewell::Ports> makeWholePorts(const std::shared_ptr<platform::EventLoop>& loop) {
  auto ports = platform::makeLinuxPorts(loop);
  ports->log = std::make_shared<tidewell::FakeSystemLog>();
  ports->console = std::make_shared<tidewell::FakeConsole>();
  ports->defaults = std::make_shared<tidewell::FakeDefaults>();
  ports->powerSources = std::make_shared<tidewell::FakePowerSources>();
  ports->assertionTable = std::make_shared<tidewell::FakeAssertionTable>();
  ports->sleepNotifications = std::make_shared<tidewell::FakeSleepNotifications>();
  return ports;
}

}  // namespace

Measurement::Measurement(Options options)
    : options_(std::move(options)),
      loop_(makeLoop()),
      wholePorts_(makeWholePorts(loop_)),
      plainPorts_(makePlainPorts(*wholePorts_)),
      installed_(*wholePorts_),
      whole_(*wholePorts_),
      plain_(*plainPorts_) {
  ignored_.insert(options_.ignored.begin(), options_.ignored.end());
  if (options_.graceSeconds) {
    staylit::Prefs::shared().defaults().setInteger(staylit::keys::graceSeconds,
                                                   *options_.graceSeconds);
  }
}

Measurement::~Measurement() = default;

bool Measurement::run() {
  begin_ = std::chrono::steady_clock::now();
  whole_.start();
  plain_.start();
  const auto timer = loop_->scheduleRepeating(kStep, [this] { step(); });
  const int status = loop_->run();
  workload_.endAll();
  return status == 0;
}

void Measurement::step() {
  const SteadyTime now = std::chrono::steady_clock::now();
  if (!workBegin_) {
    if (now - begin_ >= options_.baseline) startWorkload(now);
  } else if (!workEnd_) {
    watchWork(now);
  } else {
    watchRelease(now);
  }
}

void Measurement::startWorkload(SteadyTime now) {
  ignoreWhatIsBusy();
  cpuBefore_ = machineCpu_.percent();
  workBegin_ = now;
  if (!workload_.start(options_.command)) loop_->stop(1);
}

void Measurement::ignoreWhatIsBusy() {
  whole_.collectSeen(ignored_);
  plain_.collectSeen(ignored_);
  staylit::Prefs::shared().setIgnoredApps(ignored_);
}

void Measurement::watchWork(SteadyTime now) {
  const bool isOver = now - *workBegin_ >= options_.work;
  if (workload_.isRunning() && !isOver) return;
  cpuDuring_ = machineCpu_.percent();
  workEnd_ = now;
  exitStatus_ = workload_.exitStatus();
  workload_.endAll();
}

void Measurement::watchRelease(SteadyTime now) {
  const bool isReleased = !whole_.isHolding() && !plain_.isHolding();
  if (isReleased || now - *workEnd_ >= longestWait()) loop_->stop();
}

Seconds Measurement::longestWait() const {
  if (options_.after) return *options_.after;
  const std::int64_t grace =
      staylit::Prefs::shared().defaults().integer(staylit::keys::graceSeconds);
  return Seconds(static_cast<double>(grace)) + kSlack;
}

std::string Measurement::document() const {
  JsonWriter json;
  json.beginObject();
  writeSettings(json);
  writeWorkload(json);
  const SteadyTime origin = workBegin_.value_or(begin_);
  json.key("whole");
  whole_.write(json, origin);
  json.key("plain");
  plain_.write(json, origin);
  json.endObject();
  return json.document() + "\n";
}

void Measurement::writeSettings(JsonWriter& json) {
  tidewell::Defaults& defaults = staylit::Prefs::shared().defaults();
  json.key("settings").beginObject();
  for (const std::string_view key :
       {staylit::keys::sustainSeconds, staylit::keys::graceSeconds,
        staylit::keys::cpuThresholdPercent, staylit::keys::diskThresholdKBps,
        staylit::keys::netThresholdKBps}) {
    json.key(key).number(defaults.real(key));
  }
  json.endObject().key("ignored").beginArray();
  for (const std::string& key : staylit::Prefs::shared().ignoredApps())
    json.text(key);
  json.endArray();
  json.key("processors").number(std::thread::hardware_concurrency());
}

void Measurement::writeWorkload(JsonWriter& json) const {
  json.key("command").beginArray();
  for (const std::string& word : options_.command)
    json.text(word);
  json.endArray();
  const auto seconds = workEnd_ ? Seconds(*workEnd_ - *workBegin_) : Seconds(0);
  json.key("workSeconds").number(seconds.count()).key("exitStatus");
  exitStatus_ ? json.number(*exitStatus_) : json.null();
  json.key("machineCpuBefore").number(cpuBefore_);
  json.key("machineCpuDuring").number(cpuDuring_);
}
