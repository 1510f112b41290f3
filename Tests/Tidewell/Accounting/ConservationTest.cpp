// In random trees of processes, the sum of all that is counted is what the kernel charged.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Tests/Tidewell/Accounting/ConservedTable.h"

namespace tidewell {
namespace {

double asDouble(std::uint64_t number) {
  return static_cast<double>(number);
}

/// Groups tell nothing about bytes.
constexpr double kAnything = 1;
/// A program that nothing happens to.
constexpr std::string_view kLastsForEver = "/bin/lasts";

/// How frequent processes of some kinds are: 4 means that one of 4 is. With 0 there is none.
struct OneOf {
  unsigned hidden = 0;       ///< It may not be read.
  unsigned reapsNobody = 0;  ///< It ignores the end of its children.
  unsigned grouped = 0;      ///< It begins in one of five groups, and not in that of its parent.
};

/// Lets the processes of a random tree do everything that processes can do.
class RandomLife {
 public:
  RandomLife(SimulatedKernel& kernel, unsigned seed, const OneOf& oneOf)
      : kernel_(kernel), random_(seed), oneOf_(oneOf) {}

  void step() {
    const std::int32_t pid = any();
    switch (pick(9)) {
      case 0:
      case 1:
        if (kernel_.processes.size() < 40) spawn(pid);
        break;
      case 2:
      case 3:
      case 4: {
        // Every access to a disk needs some time of a processor. One after the other, so that a
        // seed makes the same life with every compiler.
        const unsigned time = 1 + pick(20);
        const unsigned bytes = pick(1000);
        kernel_.work(pid, time, bytes);
        break;
      }
      case 5:
        if (pid != 1) kernel_.exec(pid, name());
        break;
      case 6:
        if (pid != 1) kernel_.end(pid, heirOf(pid));
        break;
      default:
        reapOne();
    }
  }
  void endAll() {
    while (std::ranges::any_of(kernel_.processes, &RandomLife::mayEnd)) {
      const auto processes = kernel_.processes;
      for (const auto& entry : processes) {
        if (mayEnd(entry) && !entry.second.zombie) kernel_.end(entry.first);
      }
      reapOne();
    }
  }

 private:
  using Entry = std::pair<const std::int32_t, SimulatedKernel::Process>;

  static bool mayEnd(const Entry& entry) {
    return entry.first != 1 && entry.second.path != kLastsForEver;
  }
  unsigned pick(unsigned count) { return static_cast<unsigned>(random_() % count); }
  void spawn(std::int32_t parent) {
    const std::int32_t pid = kernel_.spawn(parent, name());
    kernel_.processes.at(pid).hidden = isOneOf(oneOf_.hidden);
    kernel_.processes.at(pid).reapsNobody = isOneOf(oneOf_.reapsNobody);
    if (isOneOf(oneOf_.grouped)) {
      kernel_.processes.at(pid).group = static_cast<std::int32_t>(1 + pick(5));
    }
  }
  bool isOneOf(unsigned many) { return many > 0 && pick(many) == 0; }
  std::string name() { return "/bin/" + std::string(1, static_cast<char>('a' + pick(6))); }
  std::int32_t any() {
    std::vector<std::int32_t> running;
    for (const auto& [pid, process] : kernel_.processes) {
      if (!process.zombie && process.path != kLastsForEver) running.push_back(pid);
    }
    return running[pick(static_cast<unsigned>(running.size()))];
  }
  /// Who inherits the children of a process: its parent if that has not ended and its number
  /// is a multiple of 3, or else the first process. So a third of the processes inherit children.
  std::int32_t heirOf(std::int32_t pid) {
    if (!kernel_.hasSubreapers) return 1;
    const std::int32_t parent = kernel_.processes.at(pid).parent;
    return parent > 1 && parent % 3 == 0 && !kernel_.processes.at(parent).zombie ? parent : 1;
  }
  void reapOne() {
    for (const auto& [pid, process] : kernel_.processes) {
      if (!process.zombie || kernel_.processes.at(process.parent).zombie) continue;
      kernel_.reap(pid);
      return;
    }
  }

  SimulatedKernel& kernel_;
  std::mt19937 random_;
  OneOf oneOf_;
};

class ConservationTest : public ConservedTable, public testing::WithParamInterface<int> {
 protected:
  /// How much more or less may be counted than was charged, as a part of the charge.
  struct Guessed {
    double time = 0;
    double disk = 0;
  };

  /// Whether a process with this name runs and may be read.
  [[nodiscard]] bool isReadable(const std::string& name) const {
    return std::ranges::any_of(kernel.processes, [&](const auto& entry) {
      const SimulatedKernel::Process& process = entry.second;
      return !process.zombie && !process.hidden && process.path == "/bin/" + name;
    });
  }

  /// Puts a process that lasts into each group. So the groups are known from the first pass, and
  /// there is always somebody to credit.
  void fillGroups() {
    for (int group = 1; group <= 6; ++group)
      kernel.processes.at(kernel.spawn(1, std::string(kLastsForEver))).group = group;
  }

  /// Lets the processes that last work before each pass, so that no reading of a group is older
  /// than the last pass.
  void keepGroupsBusy() { groupsAreBusy_ = true; }

  /// Allows as much too much as is counted without groups. The claims of children that nobody was
  /// charged for are guesses, and groups neither mend nor add to what these count twice.
  void alsoCountWithoutGroups() {
    withoutGroups_.emplace(ConservedProcesses::Sources{kernel, clock, others_, 1'000'000});
  }

  /// Lets the processes live and end, and checks after each pass what it counts.
  void runLife(const Guessed& guessed, const OneOf& oneOf = {});

 private:
  void workInGroups();
  void passWithBoth();
  void expectNotTooMuch(const Guessed& guessed) const;
  void expectNotTooLittle(const Guessed& guessed) const;
  /// No name has less than on the pass before, unless it ended.
  void expectNothingTakenBack();

  bool groupsAreBusy_ = false;
  std::map<std::string, Usage> former_;  ///< What was counted on the pass before.
  std::set<std::string> formerlyEnded_;
  AccountDirectory others_;
  std::optional<ConservedProcesses> withoutGroups_;
  Tally countedWithoutGroups_;
  std::uint64_t tooMuchWithoutGroups_ = 0;  ///< At most, on any pass so far.
};

void ConservationTest::workInGroups() {
  for (const auto& [pid, process] : kernel.processes) {
    if (process.path == kLastsForEver) kernel.work(pid, 1);
  }
}

void ConservationTest::passWithBoth() {
  if (groupsAreBusy_) workInGroups();
  pass();
  if (!withoutGroups_) return;
  countedWithoutGroups_.pass(*withoutGroups_);
  const std::uint64_t time = countedWithoutGroups_.total.time;
  tooMuchWithoutGroups_ = std::max(tooMuchWithoutGroups_, time - std::min(time, kernel.charged));
}

void ConservationTest::expectNotTooMuch(const Guessed& guessed) const {
  EXPECT_LE(asDouble(total.time), asDouble(kernel.charged) * (1 + guessed.time) +
                                      asDouble(kernel.handedOnTwice) +
                                      asDouble(tooMuchWithoutGroups_));
  EXPECT_LE(asDouble(total.disk), asDouble(kernel.chargedDisk) * (1 + guessed.disk));
}

void ConservationTest::expectNotTooLittle(const Guessed& guessed) const {
  // The kernel charges nobody for a dropped process. What had been seen of it may then be taken out
  // of the charge for another.
  EXPECT_GE(asDouble(total.time),
            asDouble(kernel.charged) * (1 - guessed.time) - asDouble(kernel.dropped));
  // Without an account of the reaped, the bytes of a process after its last pass are lost.
  if (!kernel.addsReapedDisk) return;
  EXPECT_GE(asDouble(total.disk), asDouble(kernel.chargedDisk) * (1 - guessed.disk));
}

void ConservationTest::expectNothingTakenBack() {
  for (const auto& [name, usage] : former_) {
    // The account of an ended name is dropped.
    if (ended.contains(name)) {
      EXPECT_FALSE(isReadable(name)) << name;
      continue;
    }
    if (formerlyEnded_.contains(name)) continue;
    EXPECT_GE(counted.at(name).time, usage.time) << name;
    EXPECT_GE(counted.at(name).disk, usage.disk) << name;
  }
  former_ = counted;
  formerlyEnded_ = ended;
}

void ConservationTest::runLife(const Guessed& guessed, const OneOf& oneOf) {
  RandomLife life(kernel, static_cast<unsigned>(GetParam()), oneOf);
  passWithBoth();
  expectNothingTakenBack();
  for (int tick = 0; tick < 60; ++tick) {
    SCOPED_TRACE("tick " + std::to_string(tick));
    for (int count = 0; count < 25; ++count)
      life.step();
    passWithBoth();
    expectNotTooMuch(guessed);
    expectNothingTakenBack();
  }
  SCOPED_TRACE("all have ended");
  life.endAll();
  passWithBoth();
  expectNotTooMuch(guessed);
  passWithBoth();
  ASSERT_GT(kernel.charged, 0U);
  ASSERT_GT(kernel.chargedDisk, 0U);
  expectNotTooMuch(guessed);
  expectNotTooLittle(guessed);
}

TEST_P(ConservationTest, CountsWhatTheKernelChargedOnceAndNeverLess) {
  runLife({});
}

TEST_P(ConservationTest, CountsOnceWhatIsReapedInOtherGroups) {
  kernel.processes.at(1).group = 6;
  fillGroups();
  runLife({}, {.grouped = 3});
}

TEST_P(ConservationTest, CountsOnceWhatIsReapedByOneInNoGroup) {
  fillGroups();
  alsoCountWithoutGroups();
  runLife({.disk = kAnything}, {.grouped = 1});
}

TEST_P(ConservationTest, CountsWhatGroupsUsedThatNobodyWasCharged) {
  kernel.processes.at(1).group = 6;
  fillGroups();
  keepGroupsBusy();
  alsoCountWithoutGroups();
  runLife({.disk = kAnything}, {.reapsNobody = 4, .grouped = 3});
}

TEST_P(ConservationTest, StaysNearTheChargeOnAMac) {
  kernel.beAMac();
  runLife({.time = 0.01});
}

TEST_P(ConservationTest, CountsOnceWhatAMacChargesTwice) {
  kernel.beAMac();
  runLife({.time = 0.01}, {.reapsNobody = 4});
}

TEST_P(ConservationTest, StaysNearTheChargeAmongProcessesThatCannotBeRead) {
  runLife({.time = 0.03, .disk = 0.03}, {.hidden = 4});
}

TEST_P(ConservationTest, StaysNearTheChargeOnAMacAmongProcessesThatCannotBeRead) {
  kernel.beAMac();
  runLife({.time = 0.03}, {.hidden = 4});
}

// No known kernel is as bad as these.

TEST_P(ConservationTest, StaysNearTheChargeIfUnreapedProcessesCannotBeRead) {
  kernel.givesNumbersAgain = false;
  kernel.hidesZombies = true;
  kernel.addsReapedDisk = false;
  runLife({.time = 0.03});
}

TEST_P(ConservationTest, StaysNearTheChargeIfNotEvenTheStartOfHiddenProcessesIsTold) {
  kernel.tellsStart = false;
  kernel.givesNumbersAgain = false;
  kernel.hidesZombies = true;
  kernel.addsReapedDisk = false;
  runLife({.time = 0.03}, {.hidden = 4});
}

INSTANTIATE_TEST_SUITE_P(RandomTrees, ConservationTest, testing::Range(1, 201));

}  // namespace
}  // namespace tidewell
