// What the parts of a tick cost, among many processes of which a tenth wakes ten times a second.
// Google Benchmark runs ticks back to back, so fewer processes have run between two of them than in
// two seconds: tick-cost measures the program as it really runs.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include "Benchmarks/Crowd.h"
#include "Platform/MakePorts.h"
#include "Staylit/StaylitEngine.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tidewell/ActivityMonitor.h"
#include "Tidewell/ProcessSampler.h"

namespace {

constexpr int kSockets = 400;

void manyProcesses(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(300)->Arg(1000)->Arg(3000)->Unit(benchmark::kMicrosecond);
}

/// One snapshot of all processes, from the kernel to the samples.
void snapshot(benchmark::State& state) {
  const Crowd crowd(static_cast<int>(state.range(0)), 0);
  const auto ports = platform::makePorts();
  tidewell::ProcessSampler sampler(*ports->processTable);
  for (auto _ : state)
    benchmark::DoNotOptimize(sampler.sample().size());
}
BENCHMARK(snapshot)->Apply(manyProcesses);

/// A table in memory, of as many processes as wanted under three hundred names.
class Table : public tidewell::ProcessTable {
 public:
  explicit Table(std::int64_t processes) : pids_(static_cast<std::size_t>(processes)) {
    std::iota(pids_.begin(), pids_.end(), 1);
    for (int name = 0; name < 300; ++name)
      paths_.push_back("/usr/bin/program-" + std::to_string(name));
  }
  tidewell::ProcessSnapshot snapshot() override { return {pids_, {}}; }
  bool resourceUsage(std::int32_t pid, tidewell::ResourceUsage& usage) override {
    usage.userTime = static_cast<std::uint64_t>(pid) * 1000;
    return true;
  }
  std::string_view path(std::int32_t pid) override {
    return paths_[static_cast<std::size_t>(pid) % paths_.size()];
  }
  tidewell::Timebase timebase() override { return {1, 1}; }

 private:
  std::vector<std::int32_t> pids_;
  std::vector<std::string> paths_;
};

/// Everything above the ports: samples to applications to rates.
void aggregation(benchmark::State& state) {
  tidewell::FakePorts fakes;
  fakes.ports.processTable = std::make_shared<Table>(state.range(0));
  tidewell::ActivityMonitor monitor(fakes.ports);
  const tidewell::ActivityThresholds thresholds(15, 500, 100, 10, {}, false);
  for (auto _ : state) {
    fakes.clock.advance(tidewell::Seconds(2));
    benchmark::DoNotOptimize(monitor.tick(thresholds).size());
  }
}
BENCHMARK(aggregation)->Apply(manyProcesses);

/// A whole tick of the engine on this machine, except that nothing is held.
void fullTick(benchmark::State& state) {
  const Crowd crowd(static_cast<int>(state.range(0)), kSockets);
  const auto ports = platform::makePorts();
  ports->defaults = std::make_shared<tidewell::FakeDefaults>();
  ports->powerManagement = std::make_shared<tidewell::FakePowerManagement>();
  const tidewell::InstalledPorts installed(*ports);
  staylit::StaylitEngine engine(*ports);
  for (auto _ : state)
    engine.tick();
}
BENCHMARK(fullTick)->Apply(manyProcesses);

}  // namespace
