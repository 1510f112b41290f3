#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/Linux/Loop/ThreadQueues.h"
#include "Platform/MacOS/Network/NettopMeter.h"
#include "Platform/Posix/Tasks/SpawnedTaskLauncher.h"
#include "Tests/Platform/Support/PlainErrorWords.h"
#include "Tests/Platform/Support/TemporaryFolder.h"
#include "Tidewell/NetworkSampler.h"

namespace platform {
namespace {

using namespace std::chrono_literals;
using tidewell::NetworkTotals;

/// Launches real processes, with the test's script instead of the system's tool.
class ScriptLauncher : public tidewell::TaskLauncher {
 public:
  explicit ScriptLauncher(std::string script) : script_(std::move(script)) {}

  Launch launch(const std::string& executable, const std::vector<std::string>& arguments) override {
    return launcher_.launch(executable == "/usr/bin/nettop" ? script_ : executable, arguments);
  }

 private:
  std::string script_;
  SpawnedTaskLauncher launcher_{testing::plainErrorWords};
};

class SystemClock : public tidewell::Clock {
 public:
  tidewell::Moment now() override {
    return tidewell::Moment(std::chrono::steady_clock::now().time_since_epoch());
  }
  tidewell::WallTime wallTime() override { return std::chrono::system_clock::now(); }
  std::chrono::nanoseconds timeAsleep() override { return {}; }
  void sleepFor(tidewell::Seconds duration) override { std::this_thread::sleep_for(duration); }
};

class NetworkSamplerWithToolTest : public ::testing::Test {
 protected:
  /// The file is replaced as a whole, because nobody can write to a script that is running.
  void setTool(std::string_view script) {
    std::filesystem::rename(folder_.writeScript("next", script), folder_.path("tool"));
  }

  void removeTool() { std::filesystem::remove(folder_.path("tool")); }

  /// Refreshes until the totals are `expected`. Returns the last totals.
  NetworkTotals totalsUntil(const NetworkTotals& expected) {
    const auto deadline = std::chrono::steady_clock::now() + 20s;
    while (sampler_.currentTotals() != expected && std::chrono::steady_clock::now() < deadline) {
      sampler_.refresh();
      std::this_thread::sleep_for(2ms);
    }
    return sampler_.currentTotals();
  }

  /// How often the tool was started. Each run of a counting script adds a byte.
  [[nodiscard]] std::ptrdiff_t runs() const {
    std::ifstream file(folder_.path("runs"), std::ios::binary);
    return std::distance(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  [[nodiscard]] std::string countRun() const {
    return "printf x >> '" + folder_.path("runs") + "'\n";
  }

  /// Refreshes until the tool was started `count` times.
  bool reachesRuns(std::ptrdiff_t count) {
    const auto deadline = std::chrono::steady_clock::now() + 20s;
    while (runs() < count) {
      if (std::chrono::steady_clock::now() > deadline) return false;
      sampler_.refresh();
      std::this_thread::sleep_for(2ms);
    }
    return true;
  }

  testing::TemporaryFolder folder_;
  ScriptLauncher launcher_{folder_.path("tool")};
  ThreadQueues queues_;
  SystemClock clock_;
  NettopMeter meter_{launcher_, clock_};
  tidewell::NetworkSampler sampler_{meter_, queues_};
};

TEST_F(NetworkSamplerWithToolTest, HasTheTotalsThatTheToolPrints) {
  setTool(
      "echo ,bytes_in,bytes_out,; echo Safari.123,456,789,; echo com.example.Helper.4567,10,20,");
  EXPECT_EQ(totalsUntil({{123, 1245}, {4567, 30}}), (NetworkTotals{{123, 1245}, {4567, 30}}));
}

TEST_F(NetworkSamplerWithToolTest, AsksForOneSampleOfRawBytesByProcess) {
  setTool("[ \"$*\" = '-P -L 1 -x -J bytes_in,bytes_out' ] && echo right.1,1,0,");
  EXPECT_EQ(totalsUntil({{1, 1}}), (NetworkTotals{{1, 1}}));
}

TEST_F(NetworkSamplerWithToolTest, FollowsTheToolFromRunToRun) {
  setTool("echo a.1,5,5,; echo b.2,1,1,");
  ASSERT_EQ(totalsUntil({{1, 10}, {2, 2}}), (NetworkTotals{{1, 10}, {2, 2}}));
  setTool("echo a.1,50,5,");
  EXPECT_EQ(totalsUntil({{1, 55}}), (NetworkTotals{{1, 55}}));
}

TEST_F(NetworkSamplerWithToolTest, KeepsTheTotalsWhileTheToolIsMissing) {
  setTool("echo a.1,2,3,");
  ASSERT_EQ(totalsUntil({{1, 5}}), (NetworkTotals{{1, 5}}));
  removeTool();
  sampler_.refresh();
  EXPECT_EQ(sampler_.currentTotals(), (NetworkTotals{{1, 5}}));
  setTool("echo a.1,20,3,");
  EXPECT_EQ(totalsUntil({{1, 23}}), (NetworkTotals{{1, 23}}));
}

TEST_F(NetworkSamplerWithToolTest, UsesWhatAFailingToolHasPrinted) {
  setTool("echo a.1,2,3,; exit 7");
  EXPECT_EQ(totalsUntil({{1, 5}}), (NetworkTotals{{1, 5}}));
}

TEST_F(NetworkSamplerWithToolTest, SkipsTheRubbishBetweenGoodLines) {
  setTool(
      "echo nonsense; echo a.b,1,2,; echo ,,,,; echo good.9,4,4,; echo bad.9,x,1,; printf tail.8");
  EXPECT_EQ(totalsUntil({{9, 8}}), (NetworkTotals{{9, 8}}));
}

TEST_F(NetworkSamplerWithToolTest, KeepsTheTotalsWhenTheOutputIsNotText) {
  setTool("echo a.1,2,3,");
  ASSERT_EQ(totalsUntil({{1, 5}}), (NetworkTotals{{1, 5}}));
  setTool(countRun() + "echo a.1,200,300,; printf '\\377\\n'");
  ASSERT_TRUE(reachesRuns(2));
  EXPECT_EQ(sampler_.currentTotals(), (NetworkTotals{{1, 5}}));
}

TEST_F(NetworkSamplerWithToolTest, StopsAToolThatPrintsWithoutEndAndTriesAgain) {
  setTool(countRun() + "exec yes a.1,2,3,");
  ASSERT_TRUE(reachesRuns(2));
  EXPECT_EQ(sampler_.currentTotals(), NetworkTotals{});
}

TEST_F(NetworkSamplerWithToolTest, RunsTheToolOnceAtATime) {
  setTool(countRun() + "exec sleep 600");
  ASSERT_TRUE(reachesRuns(1));
  sampler_.refresh();
  sampler_.refresh();
  EXPECT_EQ(runs(), 1);
}

TEST_F(NetworkSamplerWithToolTest, UsesTheOutputOfAToolThatHangsAfterIt) {
  setTool("echo a.1,2,3,; exec >&-; exec sleep 600");
  sampler_.refresh();
  EXPECT_EQ(totalsUntil({{1, 5}}), (NetworkTotals{{1, 5}}));
}

TEST_F(NetworkSamplerWithToolTest, EndsWhileAToolHangsWithItsOutputOpen) {
  setTool(countRun() + "exec sleep 600");
  ASSERT_TRUE(reachesRuns(1));
}

}  // namespace
}  // namespace platform
