#include "Tests/Campaign/Campaigns.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <random>

#include "Tests/Campaign/VirtualMachine.h"

namespace staylit::campaign {
namespace {

constexpr double kHoursOfALife = 10;

/// Lets the machine with this seed live. Returns how the program differed from the rules, if it
/// did.
std::optional<std::string> live(std::uint64_t seed, double& hours, std::int64_t& ticks) {
  VirtualMachine machine(seed);
  std::optional<std::string> difference;
  while (!difference && machine.hours() < kHoursOfALife)
    difference = machine.step();
  if (!difference) difference = machine.compareLogs();
  hours += machine.hours();
  ticks += machine.ticks();
  if (!difference) return std::nullopt;
  return "Seed " + std::to_string(seed) + ", tick " + std::to_string(machine.ticks()) + ": " +
         *difference + ".";
}

}  // namespace

Outcome virtualTime(Effort effort) {
  using Steady = std::chrono::steady_clock;
  const double wanted = 10'000;
  const auto end = Steady::now() + std::chrono::seconds(12);
  const std::uint64_t first = std::random_device()();
  Outcome outcome;
  double hours = 0;
  std::int64_t ticks = 0;
  for (std::uint64_t life = 0; hours < wanted && outcome.findings.size() < 20; ++life) {
    if (effort.quick && Steady::now() > end) break;
    ++outcome.runs;
    if (auto finding = live(first + life, hours, ticks)) {
      outcome.findings.push_back(std::move(*finding));
    }
  }
  outcome.measured = std::to_string(std::llround(hours)) + " h, " + std::to_string(ticks) +
                     " ticks, seeds from " + std::to_string(first);
  return outcome;
}

}  // namespace staylit::campaign
