#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <functional>
#include <regex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/Linux/Proc/CpuClock.h"
#include "Platform/Posix/Files/Descriptor.h"
#include "Tests/EndToEnd/Machine.h"

namespace staylit::testing {
namespace {

using namespace std::chrono_literals;

/// Sends about a megabyte a second to whoever connects.
class Server {
 public:
  Server() : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener_.get(), generic, size) != 0 || listen(listener_.get(), 1) != 0 ||
        getsockname(listener_.get(), generic, &size) != 0) {
      ADD_FAILURE() << "cannot listen on loopback";
    }
    port = ntohs(address.sin_port);
    sender_ = std::jthread([this](const std::stop_token& stop) { send(stop); });
  }
  ~Server() { shutdown(listener_.get(), SHUT_RDWR); }

  int port = 0;
  std::atomic<std::uint64_t> bytesSent = 0;

 private:
  void send(const std::stop_token& stop) {
    const platform::Descriptor client(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    const std::vector<char> block(100'000, 'x');
    while (client && !stop.stop_requested()) {
      const ssize_t sent = ::send(client.get(), block.data(), block.size(), MSG_NOSIGNAL);
      if (sent < 0) break;
      bytesSent += static_cast<std::uint64_t>(sent);
      std::this_thread::sleep_for(100ms);
    }
  }

  platform::Descriptor listener_;
  std::jthread sender_;
};

/// Reads a counter again and again, and knows the least and the greatest rate at which it grew over
/// about the length of a tick. The machine decides how fast a worker works, and the report must
/// name a rate between the two.
class GrowthWatch {
 public:
  explicit GrowthWatch(std::function<std::uint64_t()> counter)
      : counter_(std::move(counter)), watcher_([this](const std::stop_token& stop) {
          while (!stop.stop_requested()) {
            readings_.emplace_back(Clock::now(), counter_());
            std::this_thread::sleep_for(50ms);
          }
        }) {}

  struct Rates {
    double least = 1e300;
    double greatest = 0;
  };
  /// Per second. Ends the watch.
  Rates rates() {
    watcher_ = {};
    Rates rates;
    for (auto first = readings_.begin(), last = first; last != readings_.end(); ++last) {
      while (last->first - first->first > 2s)
        ++first;
      const std::chrono::duration<double> length = last->first - first->first;
      if (length < 1.5s) continue;
      const double rate = static_cast<double>(last->second - first->second) / length.count();
      rates.least = std::min(rates.least, rate);
      rates.greatest = std::max(rates.greatest, rate);
    }
    return rates;
  }

 private:
  using Clock = std::chrono::steady_clock;

  std::function<std::uint64_t()> counter_;
  std::vector<std::pair<Clock::time_point, std::uint64_t>> readings_;
  std::jthread watcher_;
};

class DiagnoseTest : public Machine {
 protected:
  /// The figure before `unit` in the row of `name`, -1 when there is none.
  double figure(const std::string& name, const std::string& unit) {
    const std::string report = output();
    std::smatch match;
    const std::regex row("\n  " + name + " [^\n]*?([0-9]+)" + unit);
    return std::regex_search(report, match, row) ? std::stod(match[1]) : -1;
  }
  static std::uint64_t bytesWritten(pid_t pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/io");
    const std::string label = "write_bytes: ";
    for (std::string line; std::getline(file, line);) {
      if (line.starts_with(label)) return std::stoull(line.substr(label.size()));
    }
    return 0;
  }
  /// Whether the row of `name` tells a rate that occurred. There is a margin, because two readings
  /// of one counter lie some time apart.
  bool tells(const std::string& name, const std::string& unitName, const GrowthWatch::Rates& rates,
             double unit) {
    const double told = figure(name, unitName);
    return told >= rates.least / unit * 0.8 - 1 && told <= rates.greatest / unit * 1.2 + 1;
  }
};

TEST_F(DiagnoseTest, FindsRealWorkUnderItsNameWithItsReasonAndFigures) {
  // The thresholds are so low that the work is found even when others leave it little of the
  // machine.
  writeSettings(
      "sustainSeconds = 4\ncpuThresholdPercent = 1.0\ndiskThresholdKBps = 1.0\n"
      "netThresholdKBps = 1.0\n");
  const Server server;
  const std::string file = std::filesystem::current_path() / "diagnose-test.data";
  const ChildProgram burner = workAs("burner", {"cpu"});
  const ChildProgram writer = workAs("writer", {"disk", file});
  const ChildProgram puller = workAs("puller", {"net", std::to_string(server.port)});
  platform::KernelCpuClock clock;
  // On a busy machine a measurement, and the bytes that it finds, may come a tick late. Then the
  // next report is right.
  bool isRight = false;
  bool chargesWrites = true;
  for (int reports = 0; reports < 8 && !isRight; ++reports) {
    GrowthWatch time([&] { return clock.nanoseconds(burner.pid()).value_or(0); });
    GrowthWatch sent([&] { return server.bytesSent.load(); });
    GrowthWatch written([&] { return bytesWritten(writer.pid()); });
    const ChildProgram staylit = start({"--diagnose"});
    ASSERT_EQ(wait(staylit), 0);
    const GrowthWatch::Rates disk = written.rates();
    chargesWrites = disk.greatest > 0;
    isRight = tells("burner", "% CPU", time.rates(), 1e7) &&
              tells("puller", " KB/s net", sent.rates(), 1024) &&
              (!chargesWrites || tells("writer", " KB/s disk", disk, 1024));
  }
  std::filesystem::remove(file);
  EXPECT_TRUE(isRight) << output();
  if (!chargesWrites) GTEST_SKIP() << "this file system charges nobody for writes";
}

TEST_F(DiagnoseTest, PrintsTheWholeReportAndNothingElse) {
  writeSettings(
      "sustainSeconds = 1\ncpuThresholdPercent = 1e9\ndiskThresholdKBps = 1e9\n"
      "netThresholdKBps = 1e9\nhonorAppAssertions = true\nignoredApps = []\n");
  const ChildProgram staylit = start({"--diagnose"});
  EXPECT_EQ(wait(staylit), 0);
  const std::regex whole(
      "Staylit diagnostics — sampling for 14s\n\n"
      "Power:      no battery · AC · lowPower=false\n"
      "Thresholds: cpu>=1000000000\\.0%  disk>=1000000000\\.0KB/s  net>=1000000000\\.0KB/s  "
      "sustained for 1s\n"
      "Grace:      120s after work stops\n\n\n"
      "Over threshold \\(0\\):\n  nothing is working\n\n"
      "Qualified \\(sustained 1s — these hold sleep\\) \\(0\\):\n  nothing sustained long "
      "enough\n\n"
      "Apps holding their own sleep assertion \\(0\\):\n  none\n\n"
      "Verdict: would let the Mac sleep\n");
  EXPECT_TRUE(std::regex_match(output(), whole)) << output();
  EXPECT_EQ(output().find('\x1b'), std::string::npos);
}

TEST_F(DiagnoseTest, SwitchesVerboseOnInTheSettingsAndLeavesTheRestAlone) {
  writeSettings("# mine\nsustainSeconds = 1  # quick\nunknown = \"kept\"\n");
  const ChildProgram staylit = start({"--diagnose"});
  EXPECT_EQ(wait(staylit), 0);
  EXPECT_NE(settings().find("verbose = true"), std::string::npos) << settings();
  EXPECT_NE(settings().find("# mine\nsustainSeconds = 1  # quick\nunknown = \"kept\"\n"),
            std::string::npos)
      << settings();
}

TEST_F(DiagnoseTest, FindsASteadyDownloadInEachOfSeveralReports) {
  writeSettings("cpuThresholdPercent = 1e9\ndiskThresholdKBps = 1e9\n");
  Server server;
  const ChildProgram worker = workAs("fetcher", {"net", std::to_string(server.port)});
  ASSERT_TRUE(eventually([&server] { return server.bytesSent > 0; }, 20s));
  // All of them write into the same file.
  std::vector<ChildProgram> reports;
  for (int number = 0; number < 4; ++number)
    reports.push_back(start({"--diagnose"}));
  for (const ChildProgram& report : reports)
    EXPECT_EQ(wait(report), 0);
  const std::string all = output();
  const std::regex verdict("Verdict: WOULD HOLD sleep");
  EXPECT_EQ(std::distance(std::sregex_iterator(all.begin(), all.end(), verdict), {}), 4) << all;
}

}  // namespace
}  // namespace staylit::testing
