#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <utility>
#include <vector>

#include "Platform/Linux/Network/InterfaceCounters.h"
#include "Platform/Linux/Network/ProcSocketHolders.h"
#include "Platform/Linux/Network/SocketDiagnostics.h"
#include "Platform/Linux/Network/SocketMeter.h"
#include "Platform/Posix/Files/Descriptor.h"

namespace platform {
namespace {

/// Both ends of loopback connections, all in this process.
class LoopbackConnections {
 public:
  explicit LoopbackConnections(int count) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    socklen_t length = sizeof address;
    listener_ = Descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    bind(listener_.get(), generic, length);
    listen(listener_.get(), 512);
    getsockname(listener_.get(), generic, &length);
    address_ = address;
    for (; count > 0; --count)
      open();
  }

  void open() {
    Descriptor client(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    connect(client.get(), reinterpret_cast<const sockaddr*>(&address_), sizeof address_);
    ends_.emplace_back(std::move(client), Descriptor(accept(listener_.get(), nullptr, nullptr)));
  }

  void close() { ends_.pop_back(); }

  /// Moves one byte through the last connection.
  void talk() const {
    char byte = 'x';
    benchmark::DoNotOptimize(write(ends_.back().first.get(), &byte, 1));
    benchmark::DoNotOptimize(read(ends_.back().second.get(), &byte, 1));
  }

 private:
  Descriptor listener_;
  sockaddr_in address_{};
  std::vector<std::pair<Descriptor, Descriptor>> ends_;
};

constexpr int kConnections = 200;  // 400 sockets.

void run(SocketMeter& meter) {
  tidewell::Cancellation cancellation;
  benchmark::DoNotOptimize(meter.measure(cancellation));
}

void NetworkMeterWhileNothingMoves(benchmark::State& state) {
  const LoopbackConnections connections(kConnections);
  SocketMeter meter;
  run(meter);
  for (auto _ : state)
    run(meter);
}
BENCHMARK(NetworkMeterWhileNothingMoves)->Unit(benchmark::kMicrosecond);

void NetworkMeterAfterTraffic(benchmark::State& state) {
  const LoopbackConnections connections(kConnections);
  SocketMeter meter;
  run(meter);
  for (auto _ : state) {
    state.PauseTiming();
    connections.talk();
    state.ResumeTiming();
    run(meter);
  }
}
BENCHMARK(NetworkMeterAfterTraffic)->Unit(benchmark::kMicrosecond);

void NetworkMeterAfterANewConnection(benchmark::State& state) {
  LoopbackConnections connections(kConnections);
  SocketMeter meter;
  run(meter);
  for (auto _ : state) {
    state.PauseTiming();
    connections.close();
    connections.open();
    state.ResumeTiming();
    run(meter);
  }
}
BENCHMARK(NetworkMeterAfterANewConnection)->Unit(benchmark::kMicrosecond);

void NetworkMeterFirstRun(benchmark::State& state) {
  const LoopbackConnections connections(kConnections);
  for (auto _ : state) {
    SocketMeter meter;
    run(meter);
  }
}
BENCHMARK(NetworkMeterFirstRun)->Unit(benchmark::kMicrosecond);

/// The floor of a run after traffic: the kernel's own part.
void SocketListing(benchmark::State& state) {
  const LoopbackConnections connections(kConnections);
  SocketDiagnostics diagnostics;
  std::vector<SocketRecord> sockets;
  for (auto _ : state)
    diagnostics.list(sockets);
  state.counters["sockets"] = static_cast<double>(sockets.size());
}
BENCHMARK(SocketListing)->Unit(benchmark::kMicrosecond);

void InterfaceCounterSum(benchmark::State& state) {
  InterfaceCounters counters;
  for (auto _ : state)
    benchmark::DoNotOptimize(counters.sum());
}
BENCHMARK(InterfaceCounterSum)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace platform
