#include "Benchmarks/Detection/WatchedEngine.h"

namespace {

double secondsSince(WatchedEngine::SteadyTime origin, WatchedEngine::SteadyTime at) {
  return tidewell::Seconds(at - origin).count();
}

void writeApps(JsonWriter& json, const std::vector<tidewell::BusyApp>& apps) {
  json.beginArray();
  for (const tidewell::BusyApp& app : apps) {
    json.beginObject();
    json.key("id").text(app.id).key("name").text(app.display).key("reason").text(app.reason());
    json.key("cpu").number(app.cpuPercent).key("disk").number(app.diskKBps);
    json.key("net").number(app.netKBps).key("busyFor").number(app.busyFor);
    json.endObject();
  }
  json.endArray();
}

}  // namespace

WatchedEngine::WatchedEngine(tidewell::Ports& ports) : engine_(withRecorder(ports)) {
  // The status is what a tick assigns last, so all else that a tick decides is known by then.
  subscription_ =
      engine_.status().observe([this](const staylit::EngineStatus& status) { record(status); });
}

WatchedEngine::~WatchedEngine() = default;

void WatchedEngine::start() {
  engine_.start();
}

void WatchedEngine::collectSeen(tidewell::TextSet& keys) const {
  for (const Tick& tick : ticks_) {
    for (const tidewell::BusyApp& app : tick.seen)
      keys.insert(app.id);
  }
}

tidewell::Ports& WatchedEngine::withRecorder(tidewell::Ports& ports) {
  ports.powerManagement = power_;
  return ports;
}

void WatchedEngine::record(const staylit::EngineStatus& status) {
  ticks_.push_back({std::chrono::steady_clock::now(), status, power_->isHolding(),
                    engine_.busyApps().get(), engine_.monitor().lastCandidates()});
}

void WatchedEngine::write(JsonWriter& json, SteadyTime origin) const {
  json.beginObject().key("ticks").beginArray();
  for (const Tick& tick : ticks_) {
    json.beginObject().key("at").number(secondsSince(origin, tick.at));
    json.key("status").text(tick.status.name()).key("held").boolean(tick.isHolding);
    json.key("busy");
    writeApps(json, tick.busy);
    json.key("seen");
    writeApps(json, tick.seen);
    json.endObject();
  }
  json.endArray().key("holds").beginArray();
  for (const RecordingPower::Event& event : power_->events()) {
    json.beginObject().key("at").number(secondsSince(origin, event.at));
    json.key("what").text(event.what).key("name").text(event.name).endObject();
  }
  json.endArray().endObject();
}
