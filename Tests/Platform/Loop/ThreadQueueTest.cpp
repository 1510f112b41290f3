#include "Platform/Linux/Loop/ThreadQueue.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <future>
#include <memory>
#include <string>
#include <thread>

#include "Platform/Linux/Loop/ThreadQueues.h"
#include "Platform/Posix/Files/Descriptor.h"
#include "Tests/Platform/Loop/SerialQueueContract.h"

namespace platform {
namespace {

std::ptrdiff_t threadCount() {
  const std::filesystem::directory_iterator threads("/proc/self/task");
  return std::distance(begin(threads), end(threads));
}

INSTANTIATE_TYPED_TEST_SUITE_P(Threads, SerialQueueContract, ThreadQueues);

TEST(ThreadQueue, StartsItsThreadWithTheFirstWorkOnly) {
  // A sanitizer starts another thread together with the first one.
  std::thread([] {}).join();
  const std::ptrdiff_t before = threadCount();
  ThreadQueue queue("lazy");
  EXPECT_EQ(threadCount(), before);
  runOn(queue, [] {});
  EXPECT_EQ(threadCount(), before + 1);
  runOn(queue, [] {});
  EXPECT_EQ(threadCount(), before + 1);
}

TEST(ThreadQueue, NamesItsThreadAfterTheFirst15BytesOfTheLabel) {
  ThreadQueues queues;
  const auto queue = queues.make("com.staylit.nettop");
  std::array<char, 16> name{};
  runOn(*queue, [&] { pthread_getname_np(pthread_self(), name.data(), name.size()); });
  EXPECT_STREQ(name.data(), "com.staylit.net");
}

TEST(ThreadQueue, BlocksEverySignalOnItsThread) {
  ThreadQueue queue("signals");
  sigset_t blocked;
  sigemptyset(&blocked);
  runOn(queue, [&] { pthread_sigmask(SIG_SETMASK, nullptr, &blocked); });
  EXPECT_EQ(sigismember(&blocked, SIGTERM), 1);
  EXPECT_EQ(sigismember(&blocked, SIGCHLD), 1);
  EXPECT_EQ(sigismember(&blocked, SIGHUP), 1);
}

TEST(ThreadQueue, LeavesTheSignalsOfItsOwnerAlone) {
  ThreadQueue queue("signals");
  runOn(queue, [] {});
  sigset_t blocked;
  pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
  EXPECT_EQ(sigismember(&blocked, SIGTERM), 0);
}

TEST(ThreadQueue, RunsAtALowerPriorityThanItsOwner) {
  ThreadQueue queue("nice");
  int niceness = 0;
  runOn(queue, [&] { niceness = getpriority(PRIO_PROCESS, static_cast<id_t>(gettid())); });
  EXPECT_GT(niceness, getpriority(PRIO_PROCESS, static_cast<id_t>(gettid())));
}

/// Notes when the work that holds it is dropped.
struct DropNotice {
  explicit DropNotice(std::promise<void>& noticed) : promise(noticed) {}
  ~DropNotice() { promise.set_value(); }
  DropNotice(const DropNotice&) = delete;
  DropNotice& operator=(const DropNotice&) = delete;
  std::promise<void>& promise;
};

TEST(ThreadQueue, DropsWorkThatHasNotBegunAndWaitsForWorkThatRuns) {
  auto queue = std::make_unique<ThreadQueue>("end");
  std::promise<void> begun;
  std::promise<void> dropped;
  std::atomic<bool> firstFinished = false;
  std::atomic<bool> secondRan = false;
  queue->async([&] {
    begun.set_value();
    dropped.get_future().wait();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    firstFinished = true;
  });
  queue->async([&, notice = std::make_shared<DropNotice>(dropped)] { secondRan = true; });
  begun.get_future().wait();
  queue.reset();
  EXPECT_TRUE(firstFinished);
  EXPECT_FALSE(secondRan);
}

TEST(ThreadQueue, MayBeDestroyedByItsOwnWork) {
  const auto ended = std::make_shared<std::promise<void>>();
  auto* queue = new ThreadQueue("own end");
  queue->async([queue, ended] {
    delete queue;
    ended->set_value();
  });
  ended->get_future().wait();
}

TEST(ThreadQueue, MayBeDestroyedByAnObjectThatItsOwnWorkHolds) {
  struct Owner {
    std::unique_ptr<ThreadQueue> queue = std::make_unique<ThreadQueue>("last owner");
    std::shared_ptr<std::promise<void>> ended = std::make_shared<std::promise<void>>();
    ~Owner() {
      queue.reset();
      ended->set_value();
    }
  };
  auto owner = std::make_shared<Owner>();
  const auto ended = owner->ended;
  std::promise<void> released;
  auto* queue = owner->queue.get();
  queue->async([owner, wait = released.get_future().share()] { wait.wait(); });
  owner.reset();
  released.set_value();
  ended->get_future().wait();
}

TEST(ThreadQueue, DoesNotWaitForAThreadThatItHasAbandoned) {
  std::promise<void> begun;
  std::promise<void> released;
  std::promise<void> ended;
  {
    ThreadQueue queue("abandoned");
    queue.async([&begun, &ended, wait = released.get_future().share()] {
      begun.set_value();
      wait.wait();
      ended.set_value();
    });
    begun.get_future().wait();
    queue.abandon();
  }
  released.set_value();
  ended.get_future().wait();
}

/// How many descriptors beyond the standard ones the calling thread sees.
std::ptrdiff_t descriptorsOfThisThread() {
  const std::filesystem::directory_iterator descriptors("/proc/thread-self/fd");
  return std::count_if(begin(descriptors), end(descriptors), [](const auto& entry) {
    return std::stoi(entry.path().filename()) > STDERR_FILENO;
  });
}

TEST(ThreadQueue, SharesDescriptorsWithItsOwnerUnlessItGetsItsOwn) {
#if defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the thread sanitizer knows one table of descriptors only";
#endif
  const Descriptor lock(open("/", O_RDONLY | O_CLOEXEC));
  ThreadQueue sharing("sharing");
  ThreadQueue owning("owning", ThreadQueue::Descriptors::own);
  std::ptrdiff_t shared = 0;
  std::ptrdiff_t own = 0;
  runOn(sharing, [&shared] { shared = descriptorsOfThisThread(); });
  runOn(owning, [&own] { own = descriptorsOfThisThread(); });
  EXPECT_GE(shared, 2);
  EXPECT_EQ(own, 1);  // The listing itself needs this one.
  EXPECT_GE(fcntl(lock.get(), F_GETFD), 0);
}

}  // namespace
}  // namespace platform
