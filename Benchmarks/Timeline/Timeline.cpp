// Shows the real engine a made-up stretch of work, in made-up time, and prints all that it decides.
#include <cstdint>
#include <cstdio>
#include <string>

#include "Benchmarks/Detection/JsonWriter.h"
#include "Benchmarks/Timeline/Scene.h"
#include "Staylit/Prefs.h"
#include "Staylit/StaylitEngine.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tidewell/AppCatalog.h"

namespace {

/// The time between two looks of the engine, as in the program.
constexpr int kTickSeconds = 2;
/// The engine starts that long before the first second of the scene: longer than the grace period,
/// with which the engine begins.
constexpr int kSecondsBefore = 140;
constexpr std::uint64_t kNanosPerPercentSecond = 10'000'000;
constexpr std::int32_t kAskingPid = 90;

std::int32_t pidOf(std::size_t program) {
  return 100 + static_cast<std::int32_t>(program);
}

/// The machine of the scene, made of fakes, with the engine on it.
class Machine {
 public:
  Machine() {
    for (std::size_t index = 0; index < scene::programs().size(); ++index) {
      fakes_.processes.add(pidOf(index), "/usr/bin/" + scene::programs()[index].name);
    }
    fakes_.applications.add(kAskingPid, std::nullopt, scene::kAskingProgram);
  }

  staylit::StaylitEngine& engine() { return engine_; }
  [[nodiscard]] bool isHeld() const { return !fakes_.power.live.empty(); }

  /// Lets the time go on from `from` to `from + kTickSeconds`, and the engine look.
  void advance(int from) {
    for (int second = from; second < from + kTickSeconds; ++second)
      work(second);
    fakes_.clock.advance(tidewell::Seconds(kTickSeconds));
    setSurroundings(from + kTickSeconds);
    engine_.tick();
  }

 private:
  void work(int second) {
    for (std::size_t index = 0; index < scene::programs().size(); ++index) {
      const double percent = scene::programs()[index].percentAt(second);
      fakes_.processes.at(pidOf(index)).usage.userTime +=
          static_cast<std::uint64_t>(percent * kNanosPerPercentSecond);
    }
  }

  /// Sets who asks to stay awake, and the battery, as they are at `second`.
  void setSurroundings(int second) {
    fakes_.assertions.holders.clear();
    if (scene::kAsking.contains(second)) {
      fakes_.assertions.hold(kAskingPid, "PreventUserIdleSystemSleep");
    }
    const bool onBattery = scene::kOnBattery.contains(second);
    fakes_.powerSources.current = tidewell::PowerSource{!onBattery, scene::kBatteryPercent};
  }

  tidewell::FakePorts fakes_;
  staylit::StaylitEngine engine_{fakes_.ports};
};

void writeTick(JsonWriter& json, int second, Machine& machine) {
  staylit::StaylitEngine& engine = machine.engine();
  json.beginObject().key("at").number(second);
  json.key("status").text(engine.status().get().name());
  json.key("summary").text(engine.status().get().summary());
  json.key("held").boolean(machine.isHeld());
  json.key("onBattery").boolean(!engine.powerState().get().onAC);
  json.key("over").beginArray();
  for (const tidewell::BusyApp& app : engine.monitor().lastCandidates())
    json.text(app.id);
  json.endArray().key("sustained").beginArray();
  for (const tidewell::BusyApp& app : engine.busyApps().get())
    json.text(app.id);
  json.endArray().key("asking").beginArray();
  for (const std::string& name : engine.assertingApps().get())
    json.text(name);
  json.endArray().endObject();
}

void writePrograms(JsonWriter& json, double threshold) {
  json.key("programs").beginArray();
  for (const scene::Program& program : scene::programs()) {
    const auto* entry = tidewell::AppCatalog::lookup(std::nullopt, program.name);
    const bool hasFloor = entry && entry->cpuFloor;
    json.beginObject().key("name").text(program.name);
    json.key("limit").number(hasFloor ? *entry->cpuFloor : threshold);
    json.key("fromCatalogue").boolean(hasFloor).key("percent").beginArray();
    for (int second = 0; second < scene::kEnd; ++second)
      json.number(program.percentAt(second));
    json.endArray().endObject();
  }
  json.endArray();
}

}  // namespace

int main() {
  Machine machine;
  JsonWriter json;
  json.beginObject();
  // These are the settings of `machine`.
  const tidewell::ActivityThresholds thresholds = staylit::Prefs::shared().activityThresholds();
  json.key("sustain").number(static_cast<double>(thresholds.sustainSeconds));
  writePrograms(json, thresholds.cpuPercent);
  json.key("ticks").beginArray();
  for (int second = -kSecondsBefore; second < scene::kEnd; second += kTickSeconds) {
    machine.advance(second);
    if (second + kTickSeconds >= 0) writeTick(json, second + kTickSeconds, machine);
  }
  json.endArray().endObject();
  std::printf("%s\n", json.document().c_str());
  return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? 0 : 1;
}
