#include <netinet/in.h>
#include <sys/socket.h>

#include <atomic>
#include <chrono>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Linux/Processes/CpuClock.h"
#include "Platform/Linux/System/Descriptor.h"
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

 private:
  void send(const std::stop_token& stop) {
    const platform::Descriptor client(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    const std::vector<char> block(100'000, 'x');
    while (client && !stop.stop_requested()) {
      if (::send(client.get(), block.data(), block.size(), MSG_NOSIGNAL) < 0) break;
      std::this_thread::sleep_for(100ms);
    }
  }

  platform::Descriptor listener_;
  std::jthread sender_;
};

class DiagnoseTest : public Machine {
 protected:
  /// The figure before `unit` in the row of `name`, -1 when there is none.
  static double figure(const std::string& report, const std::string& name,
                       const std::string& unit) {
    std::smatch match;
    const std::regex row("\n  " + name + " [^\n]*?([0-9]+)" + unit);
    return std::regex_search(report, match, row) ? std::stod(match[1]) : -1;
  }
};

TEST_F(DiagnoseTest, FindsRealWorkUnderItsNameWithItsReasonAndFigures) {
  // So low that it is found also where others leave it little of the processor.
  writeSettings("sustainSeconds = 4\ncpuThresholdPercent = 1.0\n");
  const Server server;
  const std::string file = std::filesystem::current_path() / "diagnose-test.data";
  const ChildProgram burner = workAs("burner", {"cpu"});
  const ChildProgram writer = workAs("writer", {"disk", file});
  const ChildProgram puller = workAs("puller", {"net", std::to_string(server.port)});

  platform::KernelCpuClock clock;
  const auto begin = std::chrono::steady_clock::now();
  const std::uint64_t before = clock.nanoseconds(burner.pid()).value_or(0);
  const ChildProgram staylit = start({"--diagnose"});
  EXPECT_EQ(wait(staylit), 0);
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
  const double used =
      static_cast<double>(clock.nanoseconds(burner.pid()).value_or(0) - before) / 1e9;
  std::filesystem::remove(file);

  const std::string report = output();
  const double charged = used / elapsed.count() * 100;
  EXPECT_GT(figure(report, "burner", "% CPU"), 0) << report;
  EXPECT_GT(figure(report, "puller", " KB/s net"), 0) << report;
  // What it used in the last moments and on the average are the same only where it had a core.
  if (charged < 90) GTEST_SKIP() << "the machine is busy with other work\n" << report;
  EXPECT_NEAR(figure(report, "burner", "% CPU"), charged, charged * 0.1) << report;
  // 100,000 bytes every tenth of a second, less the time that sending takes.
  EXPECT_NEAR(figure(report, "puller", " KB/s net"), 960, 200) << report;
  const double written = figure(report, "writer", " KB/s disk");
  if (written < 0) GTEST_SKIP() << "this file system charges nobody for writes\n" << report;
  EXPECT_GT(written, 1024) << report;
  EXPECT_LT(written, 4.2 * 1024) << report;
}

TEST_F(DiagnoseTest, PrintsTheWholeReportAndNothingElse) {
  writeSettings(
      "sustainSeconds = 1\ncpuThresholdPercent = 1e9\ndiskThresholdKBps = 1e9\n"
      "netThresholdKBps = 1e9\nhonorAppAssertions = true\nignoredApps = []\n");
  const ChildProgram staylit = start({"--diagnose"});
  EXPECT_EQ(wait(staylit), 0);
  // What has a CPU floor of its own may be over it; all the rest cannot be.
  const std::regex whole(
      "Staylit diagnostics — sampling for 14s\n\n"
      "Power:      [^\n]*\n"
      "(            holding is BLOCKED — [^\n]*\n)?"
      "Thresholds: cpu>=1000000000\\.0%  disk>=1000000000\\.0KB/s  net>=1000000000\\.0KB/s  "
      "sustained for 1s\n"
      "Grace:      120s after work stops\n\n\n"
      "Over threshold \\([0-9]+\\):\n(  [^\n]*\n)+\n"
      "Qualified \\(sustained 1s — these hold sleep\\) \\([0-9]+\\):\n(  [^\n]*\n)+\n"
      "Apps holding their own sleep assertion \\(0\\):\n  none\n\n"
      "Verdict: (WOULD HOLD sleep|would let the Mac sleep)\n");
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

}  // namespace
}  // namespace staylit::testing
