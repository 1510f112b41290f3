#include "Staylit/StatusReporter.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>
#include <variant>

#include "Staylit/Prefs.h"

namespace staylit {
namespace {

using State = StatusReport::State;

State stateOf(const EngineStatus& status) {
  struct Names {
    State operator()(const EngineStatus::Holding&) const { return State::holding; }
    State operator()(const EngineStatus::Winding&) const { return State::winding; }
    State operator()(const EngineStatus::Blocked&) const { return State::blocked; }
    State operator()(const EngineStatus::Idle&) const { return State::idle; }
    State operator()(const EngineStatus::Paused&) const { return State::paused; }
  };
  return std::visit(Names(), status.value);
}

/// The charge changes all the time.
bool isOfTheSameKind(const tidewell::PowerState& left, const tidewell::PowerState& right) {
  return left.onAC == right.onAC && left.hasBattery == right.hasBattery &&
         left.lowPowerMode == right.lowPowerMode;
}

void addStatus(StatusReport& report, const EngineStatus& status) {
  report.state = stateOf(status);
  report.summary = status.summary();
  if (const auto* holding = std::get_if<EngineStatus::Holding>(&status.value)) {
    report.names = holding->names;
  } else if (const auto* winding = std::get_if<EngineStatus::Winding>(&status.value)) {
    report.releasesIn = winding->secondsLeft;
  } else if (const auto* blocked = std::get_if<EngineStatus::Blocked>(&status.value)) {
    report.reason = blocked->reason;
  }
}

void addWork(StatusReport& report, StaylitEngine& engine) {
  report.busy = engine.busyApps().get();
  report.candidates = engine.monitor().lastCandidates();
  std::erase_if(report.candidates, [&report](const tidewell::BusyApp& candidate) {
    return std::ranges::find(report.busy, candidate) != report.busy.end();
  });
  report.sustainSeconds = Prefs::shared().activityThresholds().sustainSeconds;
  report.asking = engine.assertingApps().get();
  std::ranges::copy_if(engine.monitor().askingPrograms(), std::back_inserter(report.askingWords),
                       [](const auto& program) { return !program.words.empty(); });
}

}  // namespace

StatusReporter::StatusReporter(StaylitEngine& engine, tidewell::Ports& ports)
    : engine_(engine),
      ports_(ports),
      told_(engine.status().get()),
      toldPower_(engine.powerState().get()),
      toldGranted_(ports.powerManagement->isGranted()),
      since_(ports.clock->now()),
      subscription_(engine.status().observe([this](const EngineStatus& next) { look(next); })) {}

void StatusReporter::look(const EngineStatus& next) {
  const tidewell::PowerState& power = engine_.powerState().get();
  const bool isGranted = ports_.powerManagement->isGranted();
  const bool isSame =
      next.isSameState(told_) && isOfTheSameKind(power, toldPower_) && isGranted == toldGranted_;
  if (isSame) return;
  if (stateOf(next) != stateOf(told_)) since_ = ports_.clock->now();
  told_ = next;
  toldPower_ = power;
  toldGranted_ = isGranted;
  tellLater();
}

void StatusReporter::tellLater() {
  // The engine tells of its status before the status changes, and of two when it is resumed.
  if (std::exchange(isPosted_, true)) return;
  ports_.mainLoop->async([reporter = self_.make()] {
    if (!reporter) return;
    reporter->isPosted_ = false;
    reporter->changes_.set(reporter->changes_.get() + 1);
  });
}

Subscription StatusReporter::observe(std::function<void()> changed) {
  return changes_.observe([changed = std::move(changed)](int) { changed(); });
}

StatusReport StatusReporter::report() {
  StatusReport report;
  addStatus(report, engine_.status().get());
  report.since = wallTimeOf(since_);
  addHold(report);
  addWork(report, engine_);
  report.power = engine_.powerState().get();
  if (pause_) report.resumesAt = pause_->until();
  return report;
}

void StatusReporter::addHold(StatusReport& report) {
  for (const auto& assertion : ports_.powerManagement->liveAssertions()) {
    if (assertion.kind != tidewell::AssertionKind::system) continue;
    report.reason = assertion.name;
    for (const auto& grant : assertion.grants) {
      report.services.push_back(
          {grant.service, grant.seenAt ? std::optional(wallTimeOf(*grant.seenAt)) : std::nullopt});
    }
  }
}

tidewell::WallTime StatusReporter::wallTimeOf(tidewell::Moment moment) {
  return ports_.clock->wallTime() - (ports_.clock->now() - moment);
}

}  // namespace staylit
