#include "Staylit/Replay/Replay.h"

#include <algorithm>
#include <chrono>
#include <utility>
#include <variant>

#include "Staylit/History/HistoryLog.h"
#include "Staylit/History/HistoryRecorder.h"
#include "Staylit/Prefs.h"
#include "Staylit/Replay/ReplayPorts.h"
#include "Staylit/StaylitEngine.h"

namespace staylit {
namespace {

constexpr std::size_t kMostDifferencesTold = 5;
constexpr std::chrono::seconds kTwoTicks{5};
constexpr std::chrono::seconds kLongestSustain = std::chrono::hours(24);

EngineStatus withoutSeconds(const EngineStatus& status) {
  return std::holds_alternative<EngineStatus::Winding>(status.value) ? EngineStatus::winding(0)
                                                                     : status;
}

std::string inOneWord(const EngineStatus& status) {
  return std::holds_alternative<EngineStatus::Winding>(status.value) ? "Work stopped"
                                                                     : status.summary();
}

/// After this time nothing from before it counts.
std::chrono::seconds timeToSettle() {
  tidewell::Defaults& defaults = Prefs::shared().defaults();
  const std::int64_t grace =
      std::clamp(defaults.integer(keys::graceSeconds), kShortestGraceSeconds, kLongestGraceSeconds);
  const std::int64_t sustain =
      std::clamp<std::int64_t>(defaults.integer(keys::sustainSeconds), 0, kLongestSustain.count());
  return std::chrono::seconds(std::max(grace, sustain)) + kTwoTicks;
}

/// How one side stands after `status`, when it stood as `before` until then.
ReplayStretch::Side sideAfter(const EngineStatus& status, const ReplayStretch::Side& before) {
  ReplayStretch::Side side;
  if (const auto* holding = std::get_if<EngineStatus::Holding>(&status.value)) {
    side.isHeld = true;
    side.names = holding->names;
    std::ranges::sort(side.names);
  } else if (std::holds_alternative<EngineStatus::Winding>(status.value)) {
    side.isHeld = true;
    side.names = before.names;
  }
  return side;
}

}  // namespace

/// Keeps the events of all runs. A tick decides some milliseconds after its samples; here its
/// events are of the time of the samples, as is the comparison.
class Replay::Events : public HistoryLog {
 public:
  /// `tick` is when the present tick was, and changes with each.
  Events(History& history, const tidewell::Moment& tick) : history_(history), tick_(tick) {}

  void append(const HistoryEvent& event) override {
    HistoryEvent& kept = history_.events.emplace_back(event);
    const auto late = std::max(kept.moment - tick_, std::chrono::nanoseconds(0));
    kept.moment -= late;
    kept.at -= late;
    auto* started = std::get_if<HistoryEvent::Started>(&kept.what);
    if (started) started->lastSeen = history_.lastSeen;
  }
  void refresh() override {}

 private:
  History& history_;
  const tidewell::Moment& tick_;
};

/// One run of the recorded program, and the engine that repeats it.
struct Replay::Run {
  Run(std::shared_ptr<tidewell::Text> text, const tidewell::PropertyDictionary& settings,
      const TapeBegan& began, History& history)
      : ports(std::move(text), settings),
        events(history, now),
        number(began.run),
        isWhole(began.isFirst),
        first(began.at),
        now(began.at) {}

  ReplayPorts ports;
  StaylitEngine engine{ports.ports()};
  Events events;
  /// Absent until the first tick, which tells the settings.
  std::optional<HistoryRecorder> recorder;
  std::uint64_t number;
  bool isWhole;
  tidewell::Moment first;
  tidewell::Moment now;  ///< Of the last event.
  tidewell::Moment countsFrom;
  tidewell::Moment clockSetAt;
  tidewell::WallTime clockSetTo{};
  std::chrono::nanoseconds warmUp{};
  bool isStarted = false;
  bool isResumed = false;  ///< The next tick is that of a resumption.
  bool isAsleep = false;
  ReplayStretch::Side was;
  ReplayStretch::Side would;
  TapedTick tick{};
  /// The engine assigns these after the samples and before it measures a spell without work.
  Subscription beforeDecision = engine.assertingApps().observe([this](const auto&) {
    if (!tick.quietJudgedAt) return;
    ports.setTime(tick.quietSince.value_or(*tick.quietJudgedAt), tick.quietJudgedAt);
  });
};

Replay::Replay(std::shared_ptr<tidewell::Text> text, tidewell::PropertyDictionary settings)
    : text_(std::move(text)), settings_(std::move(settings)) {}

Replay::~Replay() = default;

void Replay::play(std::string_view file) {
  reader_ = std::make_unique<TapeReader>(file);
  readersVersion_ = 0;
  while (const auto event = reader_->next())
    std::visit([this](const auto& it) { happen(it); }, *event);
  result_.hasUnreadableRest |= reader_->hasUnreadableRest();
}

ReplayResult Replay::finish() {
  endRun(Ending::unknown);
  // What goes on at the end of the recording is not over, and what is known of it ends there.
  result_.history.now = result_.to + std::chrono::nanoseconds(1);
  return std::move(result_);
}

void Replay::happen(const TapeBegan& began) {
  const bool goesOn = run_ && !began.isFirst && began.run == run_->number && began.at >= run_->now;
  if (!goesOn) {
    endRun(Ending::unknown);
    run_ = std::make_unique<Run>(text_, settings_, began, result_.history);
    ++result_.runs;
  }
  result_.program = began.program;
  result_.isMadeUp = began.isMadeUp;
  happen(TapeClockSet{began.at, began.wallTime});
}

void Replay::happen(const TapedTick& tick) {
  if (!run_) return;
  advance(tick.at);
  if (std::exchange(readersVersion_, reader_->version()) != reader_->version()) ++version_;
  run_->ports.setInputs(reader_->inputs(), version_);
  run_->ports.setTime(tick.at, std::nullopt);
  run_->tick = tick;
  decide();
  compare(tick);
}

void Replay::happen(const TapeMark& mark) {
  if (!run_) return;
  advance(mark.at);
  run_->ports.setTime(mark.at, std::nullopt);
  switch (mark.kind) {
    case TapeMark::Kind::paused:
      run_->engine.setPaused(true);
      run_->was = run_->would = {};
      return;
    case TapeMark::Kind::resumed:
      run_->isResumed = true;
      return;
    case TapeMark::Kind::willSleep:
      run_->ports.sleep();
      run_->isAsleep = true;
      // Before sleep the hold is let go, and the next one comes with a tick.
      run_->was.isHeld = run_->would.isHeld = false;
      return;
    case TapeMark::Kind::didWake:
      run_->ports.wake();
      run_->isAsleep = false;
      return;
    case TapeMark::Kind::ended:
      endRun(Ending::inOrder);
      return;
  }
}

void Replay::happen(const TapeClockSet& clockSet) {
  if (!run_) return;
  advance(clockSet.at);
  run_->clockSetAt = clockSet.at;
  run_->clockSetTo = clockSet.wallTime;
  run_->ports.setTime(clockSet.at, clockSet.wallTime);
}

void Replay::decide() {
  Run& run = *run_;
  if (!std::exchange(run.isStarted, true)) {
    run.countsFrom = run.now;
    run.recorder.emplace(run.engine, run.ports.ports(), run.events);
    run.engine.start();
    if (!run.isWhole) run.warmUp = timeToSettle();
  } else if (std::exchange(run.isResumed, false)) {
    run.engine.setPaused(false);
  } else {
    run.ports.fireTimers();
  }
}

void Replay::compare(const TapedTick& tick) {
  const EngineStatus is = withoutSeconds(run_->engine.status().get());
  run_->was = sideAfter(tick.outcome, run_->was);
  run_->would = sideAfter(is, run_->would);
  result_.settings = reader_->inputs().settings;
  if (isWarmingUp(tick.at)) return;
  ++result_.ticks;
  if (is == tick.outcome) return;
  ++result_.differingTicks;
  if (result_.differences.size() == kMostDifferencesTold) return;
  result_.differences.push_back({wallTimeOf(tick.at), inOneWord(tick.outcome), inOneWord(is)});
}

void Replay::advance(tidewell::Moment to) {
  const tidewell::Moment from = std::exchange(run_->now, to);
  if (isWarmingUp(to)) {
    result_.warmUp += to - from;
    run_->countsFrom = to;
    return;
  }
  if (to == from || !run_->isStarted) return;
  ReplayStretch next{to - from, run_->was, run_->would};
  const bool isAsleep = run_->isAsleep || next.length >= HistoryRecorder::kLongestWait;
  if (isAsleep) next.was = next.would = {};
  if (!result_.stretches.empty()) {
    ReplayStretch& last = result_.stretches.back();
    if (last.was == next.was && last.would == next.would) {
      last.length += next.length;
      return;
    }
  }
  result_.stretches.push_back(std::move(next));
}

void Replay::endRun(Ending ending) {
  if (run_ && run_->recorder) {
    const bool isInOrder = ending == Ending::inOrder;
    if (isInOrder) run_->recorder->stop();
    noteRange();
    result_.history.isRunning = !isInOrder;
    if (isInOrder) result_.history.lastSeen.reset();
  }
  run_.reset();
}

void Replay::noteRange() {
  // As in a timeline, the last event of the run tells when all others were.
  const HistoryEvent& last = result_.history.events.back();
  const auto wallTime = [&last](tidewell::Moment at) { return last.at + (at - last.moment); };
  const tidewell::WallTime from = wallTime(run_->countsFrom);
  const tidewell::WallTime to = wallTime(run_->now);
  const bool isFirst = !std::exchange(hasRange_, true);
  result_.from = isFirst ? from : std::min(result_.from, from);
  result_.to = isFirst ? to : std::max(result_.to, to);
  result_.history.lastSeen = to;
}

bool Replay::isWarmingUp(tidewell::Moment at) const {
  return at - run_->first < run_->warmUp;
}

tidewell::WallTime Replay::wallTimeOf(tidewell::Moment moment) const {
  return run_->clockSetTo + (moment - run_->clockSetAt);
}

}  // namespace staylit
