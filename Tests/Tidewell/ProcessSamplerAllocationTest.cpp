#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "Tests/Fakes/FakeProcessTable.h"
#include "Tests/Fakes/FakeRunningApplications.h"
#include "Tidewell/ProcessSampler.h"

// The sanitizers bring allocation functions of their own, which are not to be replaced.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define STAYLIT_COUNTS_ALLOCATIONS 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || \
    __has_feature(memory_sanitizer)
#define STAYLIT_COUNTS_ALLOCATIONS 0
#else
#define STAYLIT_COUNTS_ALLOCATIONS 1
#endif
#else
#define STAYLIT_COUNTS_ALLOCATIONS 1
#endif

namespace {

/// Of this thread, since the program began.
thread_local std::size_t allocations = 0;

}  // namespace

#if STAYLIT_COUNTS_ALLOCATIONS

void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
  throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

#endif

namespace tidewell {
namespace {

/// The fake, without its notes on who asked, which would be allocations too.
class QuietProcessTable : public FakeProcessTable {
 public:
  using FakeProcessTable::FakeProcessTable;

  ProcessSnapshot snapshot() override { return {pids, applications}; }
  bool resourceUsage(std::int32_t pid, ResourceUsage& usage) override {
    usage = at(pid).usage;
    return at(pid).readable;
  }
  std::string_view path(std::int32_t pid) override { return *at(pid).path; }

  std::vector<std::int32_t> pids;
  std::vector<std::shared_ptr<const RunningApplication>> applications;
};

class ProcessSamplerAllocationTest : public testing::Test {
 protected:
  void SetUp() override {
    if (STAYLIT_COUNTS_ALLOCATIONS == 0) GTEST_SKIP() << "a sanitizer owns the allocator";
    for (std::int32_t pid = 1; pid <= 200; ++pid) {
      processes.add(pid, "/bin/p" + std::to_string(pid));
      processes.add(1000 + pid, "/opt/" + std::string(100, 'n') + std::to_string(pid));
    }
    // Every tenth belongs to an application.
    for (std::int32_t pid = 10; pid <= 200; pid += 10) {
      applications.add(pid, "com.example.a-rather-long-identifier" + std::to_string(pid),
                       "An Application With a Rather Long Name");
    }
    for (const auto& row : processes.rows)
      processes.pids.push_back(row.pid);
    processes.applications = applications.list();
  }

  std::size_t allocationsOfASample() {
    const std::size_t before = allocations;
    sampler.sample();
    return allocations - before;
  }

  FakeRunningApplications applications;
  QuietProcessTable processes{std::make_shared<CallLog>(), applications};
  ProcessSampler sampler{processes};
};

TEST_F(ProcessSamplerAllocationTest, AFirstSnapshotAllocatesAndIsCounted) {
  EXPECT_GE(allocationsOfASample(), 400U) << "two long texts for each of 200 processes";
}

TEST_F(ProcessSamplerAllocationTest, ASecondIdenticalSnapshotAllocatesNothingPerProcess) {
  sampler.sample();
  EXPECT_EQ(allocationsOfASample(), 0U);
  EXPECT_EQ(sampler.sample().size(), 400U);
}

TEST_F(ProcessSamplerAllocationTest, AProcessThatIsSkippedEveryTimeAllocatesNothingEither) {
  processes.rows.back().readable = false;
  sampler.sample();
  EXPECT_EQ(allocationsOfASample(), 0U);
  EXPECT_EQ(sampler.sample().size(), 399U);
}

}  // namespace
}  // namespace tidewell
