#include "Staylit/History/HistoryRecorder.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <utility>
#include <variant>

#include "Staylit/JsonText.h"
#include "Staylit/Prefs.h"
#include "Staylit/Version.h"

namespace staylit {

using tidewell::BusyApp;
using tidewell::Moment;
using tidewell::PropertyValue;

namespace {

constexpr int kTicksOfAMinute = 30;
/// Between two traces while nothing is held.
constexpr int kMinutesOfATrace = 10;
/// The system seldom forgets to tell that it has woken, but a dark wake of a Mac is none.
constexpr int kTicksUntilCertainlyAwake = 5;
/// The clocks run apart by less than this in a minute while nobody sets the wall clock.
constexpr std::chrono::seconds kNoStepOfClock{1};
constexpr std::int64_t kStepOfCharge = 5;

bool isTheSamePower(const tidewell::PowerState& left, const tidewell::PowerState& right) {
  return left.onAC == right.onAC && left.hasBattery == right.hasBattery &&
         left.lowPowerMode == right.lowPowerMode &&
         std::abs(left.percentage - right.percentage) < kStepOfCharge;
}

WorkFigures figuresOf(const BusyApp& app) {
  return {app.cpuPercent, app.diskKBps, app.netKBps};
}

WorkFigures highestFigures(const WorkFigures& left, const WorkFigures& right) {
  return {std::max(left.cpuPercent, right.cpuPercent), std::max(left.diskKBps, right.diskKBps),
          std::max(left.netKBps, right.netKBps)};
}

WorkFigures addedFigures(const WorkFigures& left, const WorkFigures& right) {
  return {left.cpuPercent + right.cpuPercent, left.diskKBps + right.diskKBps,
          left.netKBps + right.netKBps};
}

PropertyValue storedValue(std::string_view key, const PropertyValue& ofSameKind) {
  tidewell::Defaults& defaults = Prefs::shared().defaults();
  if (std::holds_alternative<bool>(ofSameKind)) return defaults.boolean(key);
  if (std::holds_alternative<std::int64_t>(ofSameKind)) return defaults.integer(key);
  if (std::holds_alternative<double>(ofSameKind)) return defaults.real(key);
  return defaults.stringList(key).value_or(std::vector<std::string>());
}

/// A setting's value for people to read.
std::string settingText(const PropertyValue& value) {
  if (const bool* flag = std::get_if<bool>(&value)) return *flag ? "true" : "false";
  if (const auto* number = std::get_if<std::int64_t>(&value)) return std::to_string(*number);
  if (const double* real = std::get_if<double>(&value)) return jsonDecimal(*real);
  std::string text;
  if (const auto* list = std::get_if<std::vector<std::string>>(&value)) {
    for (const std::string& element : *list)
      text += (text.empty() ? "" : ", ") + element;
  }
  return text;
}

bool tellsOfAPause(const EngineStatus& status) {
  return std::holds_alternative<EngineStatus::Paused>(status.value);
}

/// Of each name in turn; empty when none says anything.
std::vector<std::string> wordsOf(const std::vector<std::string>& names,
                                 const std::vector<tidewell::AskingProgram>& programs) {
  std::vector<std::string> words;
  for (const std::string& name : names) {
    const auto program = std::ranges::find(programs, name, &tidewell::AskingProgram::name);
    words.push_back(program == programs.end() ? "" : program->words);
  }
  const bool areAllEmpty = std::ranges::all_of(words, &std::string::empty);
  return areAllEmpty ? std::vector<std::string>() : words;
}

std::string blockReason(const EngineStatus& status) {
  const auto* blocked = std::get_if<EngineStatus::Blocked>(&status.value);
  return blocked ? blocked->reason : std::string();
}

}  // namespace

HistoryRecorder::HistoryRecorder(StaylitEngine& engine, tidewell::Ports& ports, HistoryLog& log)
    : engine_(engine),
      ports_(ports),
      log_(log),
      // The engine publishes its status last, when its other values are those of the tick.
      subscription_(engine.status().observe([this](const EngineStatus& next) { look(next); })) {
  observeSystemSleep();
  Prefs::shared().defaults().registerDefaults(registeredHistorySettings());
  if (Prefs::shared().defaults().boolean(keys::historyEnabled)) start();
}

void HistoryRecorder::start() {
  isRecording_ = true;
  using std::chrono::milliseconds;
  const auto now = ports_.clock->wallTime().time_since_epoch();
  run_ = std::chrono::floor<milliseconds>(now).count();
  wallOffset_ = wallOffset();
  settings_.clear();
  for (const auto& [key, value] : registeredSettings())
    settings_.emplace_back(key, storedValue(key, value));
  add(HistoryEvent::Started{programVersion(), std::nullopt});
}

void HistoryRecorder::stop() {
  if (isRecording_) end();
  isStopped_ = true;
  pauseTimer_.reset();
}

void HistoryRecorder::end() {
  endAllWork();
  add(HistoryEvent::Stopped{});
  isRecording_ = false;
  last_.reset();
  ticksAsleep_.reset();
  told_.reset();
  toldPower_.reset();
  toldAsking_ = {};
  toldLid_.reset();
  toldLidHold_ = false;
}

void HistoryRecorder::look(const EngineStatus& next) {
  if (isStopped_) return;
  followPause(next);
  if (++ticks_ >= kTicksOfAMinute) everyMinute();
  if (!isRecording_ || !isAwake()) return;
  if (tellsOfAPause(next)) {
    // While the engine is paused there are no ticks, and nothing is looked at.
    endAllWork();
    last_.reset();
  } else if (!told_ || !tellsOfAPause(*told_)) {  // What is published on resuming is from before.
    lookForSleepThatNobodyAnnounced(ports_.clock->now());
    recordPower();
    recordLid();
    recordLidHold();
    recordWork(engine_.busyApps().get());
    recordAsking(engine_.assertingApps().get());
  }
  recordState(next);
}

bool HistoryRecorder::isAwake() {
  if (!ticksAsleep_) return true;
  if (++*ticksAsleep_ < kTicksUntilCertainlyAwake) return false;
  wakeUp();
  return true;
}

void HistoryRecorder::lookForSleepThatNobodyAnnounced(Moment now) {
  // A program that somebody stopped for a while has no ticks either.
  const bool hasSlept = last_ && now - *last_ >= kLongestWait &&
                        ports_.clock->timeAsleep() - asleepBefore_ > (now - *last_) / 2;
  if (hasSlept) {
    before_ = now - *last_;
    fallAsleep();
    before_ = {};
    wakeUp();
  }
  if (!last_ || ticks_ == 0) asleepBefore_ = ports_.clock->timeAsleep();
  last_ = now;
}

void HistoryRecorder::recordPower() {
  const tidewell::PowerState& power = engine_.powerState().get();
  if (toldPower_ && isTheSamePower(*toldPower_, power)) return;
  toldPower_ = power;
  add(HistoryEvent::PowerChanged{power});
}

void HistoryRecorder::recordLid() {
  const std::optional<bool> isClosed = ports_.powerSources->isLidClosed();
  if (!isClosed || isClosed == toldLid_) return;
  const bool isNews = toldLid_ || *isClosed;
  toldLid_ = isClosed;
  if (isNews) add(HistoryEvent::LidMoved{*isClosed});
}

void HistoryRecorder::recordLidHold() {
  const bool isHeld = ports_.lidSwitch && ports_.lidSwitch->holds();
  if (isHeld == toldLidHold_) return;
  toldLidHold_ = isHeld;
  add(HistoryEvent::LidHoldChanged{isHeld});
}

void HistoryRecorder::recordWork(const std::vector<BusyApp>& busy) {
  for (Work& work : works_)
    work.isSeen = false;
  for (const BusyApp& app : busy) {
    auto work = std::ranges::find(works_, app.id, &Work::key);
    if (work == works_.end()) {
      add(HistoryEvent::WorkBegan{app.id, app.display, app.category, app.busyFor, figuresOf(app)});
      works_.push_back({app.id, {}, {}, 0, false});
      work = works_.end() - 1;
    }
    work->isSeen = true;
    work->peak = highestFigures(work->peak, figuresOf(app));
    work->sum = addedFigures(work->sum, figuresOf(app));
    work->ticks += 1;
  }
  std::erase_if(works_, [this](const Work& work) {
    if (work.isSeen) return false;
    const WorkFigures& sum = work.sum;
    add(HistoryEvent::WorkEnded{
        work.key,
        work.peak,
        {sum.cpuPercent / work.ticks, sum.diskKBps / work.ticks, sum.netKBps / work.ticks}});
    return true;
  });
}

void HistoryRecorder::recordAsking(const std::vector<std::string>& names) {
  HistoryEvent::AskingChanged next{names, wordsOf(names, engine_.monitor().askingPrograms())};
  const bool areTheSame =
      next.names.size() == toldAsking_.names.size() &&
      std::is_permutation(next.names.begin(), next.names.end(), toldAsking_.names.begin());
  // Some programs say at each tick how far they are.
  const bool areWordsNews = next.words != toldAsking_.words && ticks_ == 0;
  if (areTheSame && !areWordsNews) return;
  toldAsking_ = std::move(next);
  add(toldAsking_);
}

void HistoryRecorder::recordState(const EngineStatus& next) {
  const bool isGranted = ports_.powerManagement->isGranted();
  if (told_ && next.isSameState(*told_) && isGranted == toldGranted_) return;
  told_ = next;
  toldGranted_ = isGranted;
  HistoryEvent::StateChanged changed{
      stateNamed(next.name()).value_or(StatusReport::State::idle), blockReason(next), {}, {}};
  if (const auto* holding = std::get_if<EngineStatus::Holding>(&next.value)) {
    changed.names = holding->names;
  }
  for (const auto& assertion : ports_.powerManagement->liveAssertions()) {
    if (assertion.kind != tidewell::AssertionKind::system) continue;
    changed.reason = assertion.name;
    for (const auto& grant : assertion.grants)
      changed.services.push_back(grant.service);
  }
  add(std::move(changed));
}

void HistoryRecorder::endAllWork() {
  recordWork({});
  recordAsking({});
}

void HistoryRecorder::followPause(const EngineStatus& next) {
  if (!tellsOfAPause(next)) return pauseTimer_.reset();
  if (pauseTimer_) return;
  constexpr std::chrono::minutes interval(kMinutesOfATrace);
  pauseTimer_ = ports_.mainLoop->scheduleRepeating(interval, [this] { whilePaused(); });
  pauseTimer_->setTolerance(std::chrono::minutes(1));
}

void HistoryRecorder::everyMinute() {
  ticks_ = 0;
  lookAround();
  if (++minutes_ >= kMinutesOfATrace || engine_.isHolding()) leaveTrace();
}

void HistoryRecorder::whilePaused() {
  lookAround();
  // A history that begins only now, or a sleep, makes the pause news.
  if (isRecording_ && !ticksAsleep_ && !told_) recordState(engine_.status().get());
  leaveTrace();
}

void HistoryRecorder::leaveTrace() {
  minutes_ = 0;
  if (isRecording_) log_.refresh();
}

void HistoryRecorder::lookAround() {
  const bool isWanted = Prefs::shared().defaults().boolean(keys::historyEnabled);
  if (isWanted && !isRecording_) start();
  if (!isRecording_) return;
  lookAtSettings();
  lookAtWallTime();
  if (!isWanted) end();
}

void HistoryRecorder::lookAtSettings() {
  for (auto& [key, value] : settings_) {
    PropertyValue now = storedValue(key, value);
    if (now == value) continue;
    add(HistoryEvent::SettingChanged{key, settingText(value), settingText(now)});
    value = std::move(now);
  }
}

void HistoryRecorder::lookAtWallTime() {
  const std::chrono::nanoseconds before = std::exchange(wallOffset_, wallOffset());
  const std::chrono::nanoseconds step = wallOffset_ - before;
  if (std::chrono::abs(step) >= kNoStepOfClock) add(HistoryEvent::ClockSet{});
}

std::chrono::nanoseconds HistoryRecorder::wallOffset() const {
  const auto wallTime = ports_.clock->wallTime().time_since_epoch();
  return wallTime - ports_.clock->now().time_since_epoch();
}

void HistoryRecorder::observeSystemSleep() {
  const auto hop = [this](void (*action)(HistoryRecorder&)) {
    return [&loop = *ports_.mainLoop, recorder = self_.make(), action] {
      loop.async([recorder, action] {
        if (recorder && recorder->isRecording_) action(*recorder);
      });
    };
  };
  ports_.sleepNotifications->observe(hop([](HistoryRecorder& recorder) { recorder.fallAsleep(); }),
                                     hop([](HistoryRecorder& recorder) { recorder.wakeUp(); }));
}

void HistoryRecorder::fallAsleep() {
  if (ticksAsleep_) return;
  endAllWork();
  add(HistoryEvent::FellAsleep{});
  ticksAsleep_ = 0;
}

void HistoryRecorder::wakeUp() {
  if (!ticksAsleep_) return;
  ticksAsleep_.reset();
  last_.reset();
  // The hold was let go before sleep, so what is told next is news.
  told_.reset();
  add(HistoryEvent::WokeUp{});
}

void HistoryRecorder::add(HistoryEvent::What what) {
  log_.append(
      {ports_.clock->wallTime() - before_, ports_.clock->now() - before_, run_, std::move(what)});
}

}  // namespace staylit
