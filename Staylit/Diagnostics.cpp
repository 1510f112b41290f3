#include "Staylit/Diagnostics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "Staylit/Prefs.h"
#include "Staylit/StatusTexts.h"
#include "Staylit/StaylitEngine.h"
#include "Tidewell/ActivityMonitor.h"
#include "Tidewell/BatteryMonitor.h"
#include "Tidewell/FatalError.h"
#include "Tidewell/PowerAssertionReader.h"

namespace staylit {

using tidewell::Moment;
using tidewell::Seconds;

namespace {

constexpr std::size_t kMostRows = 12;
constexpr std::size_t kNameWidth = 26;
constexpr std::int64_t kShortestSampling = 14;
constexpr std::int64_t kSamplingBeyondSustain = 6;
/// A century: as good as endless, and its end is still a valid moment.
constexpr std::int64_t kLongestSampling = 3'155'760'000;

/// Has room for any double: the largest has 309 digits before its point, the smallest 1,074 after
/// it.
using Digits = std::array<char, 1500>;

std::string fixed(int decimals, double value) {
  Digits text{};
  std::snprintf(text.data(), text.size(), "%.*f", decimals, value);
  return text.data();
}

std::string scientific(int decimals, double value) {
  Digits text{};
  std::snprintf(text.data(), text.size(), "%.*e", decimals, value);
  return text.data();
}

/// The shortest decimal that reads back as `value`, always with a decimal point.
std::string shortestReal(double value) {
  if (!std::isfinite(value)) return fixed(0, value);
  int decimals = 0;
  while (decimals < 16 && std::strtod(scientific(decimals, value).c_str(), nullptr) != value) {
    ++decimals;
  }
  const std::string shortest = scientific(decimals, value);
  const int exponent = std::atoi(shortest.c_str() + shortest.find('e') + 1);
  return fixed(std::max(1, decimals - exponent), value);
}

std::int64_t wholeSeconds(double seconds) {
  constexpr double kBeyondInteger = 9223372036854775808.0;
  if (!(seconds < kBeyondInteger && seconds >= -kBeyondInteger)) {
    tidewell::fatalError("a busy time is beyond any integer");
  }
  return static_cast<std::int64_t>(seconds);
}

std::int64_t sustainSeconds() {
  return std::max<std::int64_t>(1, Prefs::shared().defaults().integer(keys::sustainSeconds));
}

void printPower(tidewell::Console& console) {
  const tidewell::PowerState power = tidewell::BatteryMonitor::current();
  console.printLine("Power:      " + describe(power));
  if (const auto reason = power.blockedReason(Prefs::shared().powerPolicy())) {
    console.printLine("            holding is BLOCKED — " + *reason);
  }
}

void printLimits(tidewell::Console& console, std::int64_t sustain) {
  tidewell::Defaults& defaults = Prefs::shared().defaults();
  console.printLine("Thresholds: cpu>=" + shortestReal(defaults.real(keys::cpuThresholdPercent)) +
                    "%  " + "disk>=" + shortestReal(defaults.real(keys::diskThresholdKBps)) +
                    "KB/s  " + "net>=" + shortestReal(defaults.real(keys::netThresholdKBps)) +
                    "KB/s  " + "sustained for " + std::to_string(sustain) + "s");
  console.printLine("Grace:      " + std::to_string(defaults.integer(keys::graceSeconds)) +
                    "s after work stops\n");
}

/// Puts the cursor into the first column and clears the rest of the line.
constexpr std::string_view kClearLine = "\r\x1b[K";
constexpr std::size_t kBarWidth = 20;

std::string bar(double fraction) {
  const auto filled = static_cast<std::size_t>(fraction * static_cast<double>(kBarWidth));
  return "[" + std::string(filled, '=') + std::string(kBarWidth - filled, ' ') + "]";
}

/// One line on standard error that tells how far the sampling is and how long it still takes. The
/// line is shown only if standard error is a terminal, and disappears with this object.
class SamplingProgress {
 public:
  SamplingProgress(tidewell::Console& console, Seconds duration)
      : console_(console), duration_(duration), isVisible_(console.errorIsTerminal()) {}
  ~SamplingProgress() {
    if (isVisible_) console_.writeError(kClearLine);
  }
  SamplingProgress(const SamplingProgress&) = delete;
  SamplingProgress& operator=(const SamplingProgress&) = delete;

  /// `elapsed` is neither negative nor more than the whole duration.
  void show(Seconds elapsed) {
    if (!isVisible_) return;
    const double left = std::ceil((duration_ - elapsed).count());
    console_.writeError(std::string(kClearLine) + "Sampling " + bar(elapsed / duration_) + " " +
                        std::to_string(static_cast<long long>(left)) + "s left");
  }

 private:
  tidewell::Console& console_;
  Seconds duration_;
  bool isVisible_;
};

void sample(tidewell::ActivityMonitor& monitor, tidewell::Ports& ports, std::int64_t duration) {
  SamplingProgress progress(*ports.console, std::chrono::seconds(duration));
  const Moment begin = ports.clock->now();
  const Moment deadline = begin + std::chrono::seconds(duration);
  for (Moment now = begin; now < deadline; now = ports.clock->now()) {
    progress.show(now - begin);
    monitor.tick(Prefs::shared().activityThresholds());
    ports.clock->sleepFor(StaylitEngine::kInterval);
  }
  monitor.tick(Prefs::shared().activityThresholds());
}

void printAsserting(tidewell::Console& console, const std::vector<std::string>& names) {
  console.printLine("\nApps holding their own sleep assertion (" + std::to_string(names.size()) +
                    "):");
  if (names.empty()) console.printLine("  none");
  for (const std::string& name : names)
    console.printLine("  " + name);
}

}  // namespace

void Diagnostics::run(tidewell::Ports& ports) {
  tidewell::Console& console = *ports.console;
  tidewell::ActivityMonitor monitor(ports);
  const std::int64_t sustain = sustainSeconds();
  const std::int64_t duration =
      std::max(kShortestSampling, std::min(sustain, kLongestSampling) + kSamplingBeyondSustain);

  console.printLine("Staylit diagnostics — sampling for " + std::to_string(duration) + "s\n");
  printPower(console);
  printLimits(console, sustain);
  sample(monitor, ports, duration);

  report(ports, "Over threshold", monitor.lastCandidates(), "nothing is working");
  report(ports, "Qualified (sustained " + std::to_string(sustain) + "s — these hold sleep)",
         monitor.lastBusy(), "nothing sustained long enough");
  const std::vector<std::string> asserting = tidewell::PowerAssertionReader::appsPreventingSleep();
  printAsserting(console, asserting);
  // The verdict is coarse on purpose: the lines above say what blocks a hold, and a setting decides
  // whether other programs' requests count.
  const bool wouldHold = !monitor.lastBusy().empty() || !asserting.empty();
  console.printLine(std::string("\nVerdict: ") +
                    (wouldHold ? "WOULD HOLD sleep" : "would let the Mac sleep"));
}

void Diagnostics::report(tidewell::Ports& ports, const std::string& title,
                         const std::vector<tidewell::BusyApp>& apps, const std::string& empty) {
  tidewell::Console& console = *ports.console;
  console.printLine("\n" + title + " (" + std::to_string(apps.size()) + "):");
  if (apps.empty()) console.printLine("  " + empty);
  for (std::size_t row = 0; row < std::min(apps.size(), kMostRows); ++row) {
    const tidewell::BusyApp& app = apps[row];
    console.printLine("  " + ports.text->padded(app.display, kNameWidth) + " " + app.reason() +
                      "  [busy " + std::to_string(wholeSeconds(app.busyFor)) + "s]");
  }
}

}  // namespace staylit
