#include "Tidewell/ActivityMonitor.h"

#include <algorithm>
#include <utility>

#include "Tidewell/AppCatalog.h"
#include "Tidewell/PowerAssertionReader.h"

namespace tidewell {
namespace {

constexpr Seconds kShortestInterval{0.2};
constexpr Seconds kLongestInterval{120.0};
constexpr double kNanosPerSecond = 1'000'000'000;

/// How far a sum of counters grew. The end of a process can make a sum drop; that is no work.
double growth(std::uint64_t now, std::uint64_t before) {
  return now < before ? 0.0 : static_cast<double>(now - before);
}

double perSecond(std::uint64_t now, std::uint64_t before, Seconds interval) {
  return growth(now, before) / interval.count();
}

}  // namespace

ActivityMonitor::ActivityMonitor(Ports& ports)
    : text_(*ports.text),
      clock_(*ports.clock),
      processSampler_(*ports.processTable),
      networkSampler_(*ports.networkMeter, *ports.serialQueues) {}

std::vector<BusyApp> ActivityMonitor::tick(const ActivityThresholds& thresholds) {
  networkSampler_.refresh();
  const NetworkTotals netTotals = networkSampler_.currentTotals();
  const std::vector<RawSample>& samples = processSampler_.sample();
  const Moment now = clock_.now();
  Applications current = aggregate(samples, netTotals);

  const Seconds interval = previousAt_ ? Seconds(now - *previousAt_) : Seconds::zero();
  const bool comparable = interval > kShortestInterval && interval < kLongestInterval;
  if (comparable) {
    judge(current, interval, now, thresholds);
    updateAssertingApps(thresholds);
  }
  if (listener_) {
    listener_->ticked({now, samples, netTotals, comparable ? &everyAsserting_ : nullptr});
  }
  previous_ = std::move(current);
  previousAt_ = now;
  return comparable ? lastBusy_ : std::vector<BusyApp>();
}

void ActivityMonitor::reset() {
  previous_.clear();
  previousAt_.reset();
  busySince_.clear();
  lastBusy_.clear();
  lastCandidates_.clear();
}

ActivityMonitor::Applications ActivityMonitor::aggregate(const std::vector<RawSample>& samples,
                                                         const NetworkTotals& netTotals) {
  Applications applications;
  applications.reserve(previous_.size());
  for (const RawSample& sample : samples) {
    const std::string_view key = sample.bundleID ? *sample.bundleID : sample.executable;
    // The first process of an application decides its name, its category and its CPU floor.
    auto found = applications.find(key);
    if (found == applications.end()) {
      found = applications.emplace(key, startAccumulator(sample)).first;
    }
    Accumulator& application = found->second;
    application.cpuNanos += sample.cpuNanos;
    application.diskBytes += sample.diskBytes;
    const auto total = netTotals.find(sample.pid);
    if (total != netTotals.end()) application.netBytes += total->second;
  }
  return applications;
}

ActivityMonitor::Accumulator ActivityMonitor::startAccumulator(const RawSample& sample) {
  Accumulator application;
  const CatalogEntry* entry = AppCatalog::lookup(sample.bundleID, sample.executable, text_);
  application.display = entry ? std::string_view(entry->display) : sample.displayName;
  if (entry) application.category = entry->category;
  if (entry) application.cpuFloor = entry->cpuFloor;
  return application;
}

void ActivityMonitor::judge(const Applications& current, Seconds interval, Moment now,
                            const ActivityThresholds& thresholds) {
  TextMap<Moment> stillBusySince;
  std::vector<BusyApp> candidates;
  std::vector<BusyApp> busy;
  for (const auto& [key, application] : current) {
    std::optional<BusyApp> app = overThreshold(key, application, interval, thresholds);
    if (!app) continue;
    const auto run = busySince_.find(key);
    const Moment since = run == busySince_.end() ? now : run->second;
    stillBusySince.emplace(key, since);
    app->busyFor = Seconds(now - since).count();
    if (app->busyFor >= static_cast<double>(thresholds.sustainSeconds)) busy.push_back(*app);
    candidates.push_back(std::move(*app));
  }
  busySince_ = std::move(stillBusySince);

  std::ranges::stable_sort(candidates, std::ranges::greater(), &BusyApp::cpuPercent);
  // This order leaves out disk throughput on purpose.
  std::ranges::stable_sort(busy, std::ranges::greater(),
                           [](const BusyApp& app) { return app.cpuPercent + app.netKBps; });
  lastCandidates_ = std::move(candidates);
  lastBusy_ = std::move(busy);
}

std::optional<BusyApp> ActivityMonitor::overThreshold(const std::string& key,
                                                      const Accumulator& application,
                                                      Seconds interval,
                                                      const ActivityThresholds& thresholds) {
  if (thresholds.ignored.contains(key)) return std::nullopt;
  const auto before = previous_.find(key);
  if (before == previous_.end()) return std::nullopt;
  const Accumulator& past = before->second;

  const double cpu =
      perSecond(application.cpuNanos, past.cpuNanos, interval) / kNanosPerSecond * 100;
  const double disk = perSecond(application.diskBytes, past.diskBytes, interval) / 1024;
  const double net = perSecond(application.netBytes, past.netBytes, interval) / 1024;
  const double cpuLimit = application.cpuFloor.value_or(thresholds.cpuPercent);
  if (!(cpu >= cpuLimit || disk >= thresholds.diskKBps || net >= thresholds.netKBps)) {
    return std::nullopt;
  }
  return BusyApp{key, application.display, application.category, cpu, disk, net, 0};
}

void ActivityMonitor::updateAssertingApps(const ActivityThresholds& thresholds) {
  assertingApps_.clear();
  asking_.clear();
  if (!thresholds.honorAppAssertions && !listener_) return;
  everyAsserting_.clear();
  for (AskingProgram& program : PowerAssertionReader::programsPreventingSleep()) {
    if (listener_) everyAsserting_.push_back(program.name);
    if (!thresholds.honorAppAssertions || thresholds.ignored.contains(program.name)) continue;
    assertingApps_.push_back(program.name);
    asking_.push_back(std::move(program));
  }
}

}  // namespace tidewell
