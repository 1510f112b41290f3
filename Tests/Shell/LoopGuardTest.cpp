#include "Staylit/Desktop/Display/LoopGuard.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <optional>

#include "Tests/Platform/Support/RunUntil.h"

namespace staylit {
namespace {

using namespace std::chrono_literals;

class LoopGuardTest : public ::testing::Test {
 protected:
  void guardWith(LoopGuard::Patience patience) {
    guard.emplace(loop, patience, [this] {
      const std::lock_guard lock(mutex);
      isLost = true;
      changed.notify_one();
    });
  }
  /// Keeps the main thread from its loop until the guard notices that.
  bool standStill() {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, 60s, [this] { return isLost; });
  }

  platform::EventLoop loop;
  std::mutex mutex;
  std::condition_variable changed;
  bool isLost = false;
  std::optional<LoopGuard> guard;
};

TEST_F(LoopGuardTest, NoticesALoopThatStandsStill) {
  guardWith({20ms, 6, 6});
  EXPECT_TRUE(standStill());
}

TEST_F(LoopGuardTest, DoesNothingWhileTheLoopRuns) {
  // Even on a busy machine the guard cannot look so often between two beats of the loop.
  guardWith({10ms, 200, 200});
  int rounds = 0;
  const auto timer = loop.scheduleRepeating(tidewell::Seconds{0.1}, [&rounds] { ++rounds; });
  EXPECT_TRUE(platform::testing::runUntil(loop, [&rounds] { return rounds > 40; }));
  guard.reset();
  EXPECT_FALSE(isLost);
}

TEST_F(LoopGuardTest, WaitsLessOnceSomebodyWantsTheProcessToEnd) {
  sigset_t term;
  sigemptyset(&term);
  sigaddset(&term, SIGTERM);
  sigset_t former;
  pthread_sigmask(SIG_BLOCK, &term, &former);
  ::kill(::getpid(), SIGTERM);
  guardWith({20ms, 1'000'000, 2});
  EXPECT_TRUE(standStill());
  guard.reset();
  int number = 0;
  sigwait(&term, &number);
  pthread_sigmask(SIG_SETMASK, &former, nullptr);
}

TEST_F(LoopGuardTest, IsDestroyedWithoutAWait) {
  guardWith({24h, 6, 2});
  guard.reset();
  EXPECT_FALSE(isLost);
}

}  // namespace
}  // namespace staylit
