#include "Staylit/Replay/TapeRecorder.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <utility>
#include <variant>

#include "Staylit/Prefs.h"

namespace staylit {
namespace {

/// The clocks run apart by less than this while nobody sets the wall clock.
constexpr std::chrono::seconds kNoStep{1};

/// The value of one setting, read as the engine reads values of its type.
struct Reading {
  tidewell::Defaults& defaults;
  std::string_view key;

  tidewell::PropertyValue operator()(bool) const { return defaults.boolean(key); }
  tidewell::PropertyValue operator()(std::int64_t) const { return defaults.integer(key); }
  tidewell::PropertyValue operator()(double) const { return defaults.real(key); }
  tidewell::PropertyValue operator()(const std::vector<std::string>&) const {
    return defaults.stringList(key).value_or(std::vector<std::string>());
  }
  template <typename Other>
  tidewell::PropertyValue operator()(const Other&) const {
    return {};
  }
};

}  // namespace

TapeRecorder::TapeRecorder(StaylitEngine& engine, tidewell::Ports& ports, TapeOutput& output,
                           Names names, std::string program)
    : engine_(engine),
      ports_(ports),
      writer_(output),
      program_(std::move(program)),
      madeUp_(names == Names::madeUp ? std::optional<MadeUpNames>(*ports.text) : std::nullopt),
      applications_(madeUp_ ? &*madeUp_ : nullptr),
      registered_(registeredSettings()),
      run_(static_cast<std::uint64_t>(ports.clock->wallTime().time_since_epoch().count())),
      status_(engine.status().observe([this](const EngineStatus& next) { look(next); })) {
  engine_.setTickListener(this);
  observeSystemSleep();
}

TapeRecorder::~TapeRecorder() {
  finish();
}

void TapeRecorder::finish() {
  if (std::exchange(isFinished_, true)) return;
  engine_.setTickListener(nullptr);
  status_ = {};
  pending_.reset();
  if (first_ && !writer_.isStopped()) add(TapeMark::Kind::ended);
  writer_.flush();
}

TapeRecorder::Figures TapeRecorder::figures() const {
  return {ticks_, writer_.bytesWritten(), first_ ? last_ - *first_ : tidewell::Seconds(),
          writer_.isStopped()};
}

void TapeRecorder::ticked(const tidewell::TickInputs& inputs) {
  if (writer_.isStopped()) return;
  beginIfNecessary(inputs.at);
  noteWallTime(inputs.at);
  applications_.fold(inputs, inputs_.applications);
  if (inputs.asserting) inputs_.asserting = namesOf(*inputs.asserting);
  pending_ = TapedTick{inputs.at, std::nullopt, std::nullopt, EngineStatus::idle()};
}

void TapeRecorder::look(const EngineStatus& next) {
  if (writer_.isStopped()) return;
  if (pending_) return finishTick(next);
  // The engine publishes without a tick when it is paused and when it is resumed.
  const bool isPaused = std::holds_alternative<EngineStatus::Paused>(next.value);
  add(isPaused ? TapeMark::Kind::paused : TapeMark::Kind::resumed);
}

void TapeRecorder::finishTick(const EngineStatus& next) {
  TapedTick tick = *std::exchange(pending_, std::nullopt);
  inputs_.power = engine_.powerState().get();
  inputs_.settings = settings();
  tick.outcome = asOnTape(next);
  noteQuiet(next, tick);
  writer_.add(tick, inputs_);
  ++ticks_;
  last_ = tick.at;
}

void TapeRecorder::noteQuiet(const EngineStatus& next, TapedTick& tick) {
  const bool isQuiet = std::holds_alternative<EngineStatus::Winding>(next.value) ||
                       std::holds_alternative<EngineStatus::Idle>(next.value);
  if (isQuiet) tick.quietJudgedAt = engine_.quietJudgedAt();
  if (isQuiet && engine_.quietSince() != quietSince_) tick.quietSince = engine_.quietSince();
  quietSince_ = engine_.quietSince();
}

void TapeRecorder::add(TapeMark::Kind kind) {
  const tidewell::Moment now = ports_.clock->now();
  beginIfNecessary(now);
  writer_.add(TapeMark{now, kind});
  last_ = now;
}

void TapeRecorder::beginIfNecessary(tidewell::Moment at) {
  if (!writer_.needsBeginning() && !applications_.isWorthClearing()) return;
  if (!first_) first_ = at;
  last_ = at;
  applications_.clear();
  inputs_.applications.clear();
  const tidewell::WallTime wallTime = ports_.clock->wallTime();
  wallOffset_ = wallTime.time_since_epoch() - at.time_since_epoch();
  writer_.begin(
      {at, wallTime, program_, run_, std::exchange(isFirst_, false), madeUp_.has_value()});
}

void TapeRecorder::noteWallTime(tidewell::Moment at) {
  const tidewell::WallTime wallTime = ports_.clock->wallTime();
  const std::chrono::nanoseconds offset = wallTime.time_since_epoch() - at.time_since_epoch();
  if (offset - wallOffset_ < kNoStep && wallOffset_ - offset < kNoStep) return;
  wallOffset_ = offset;
  writer_.add(TapeClockSet{at, wallTime});
}

bool TapeRecorder::isRecording() const {
  return first_ && !isFinished_ && !writer_.isStopped();
}

EngineStatus TapeRecorder::asOnTape(const EngineStatus& status) {
  if (!madeUp_ || !std::holds_alternative<EngineStatus::Holding>(status.value)) return status;
  std::vector<std::string> names;
  for (const tidewell::BusyApp& app : engine_.busyApps().get())
    names.push_back(nameOf(app));
  const auto asserting = namesOf(engine_.assertingApps().get());
  names.insert(names.end(), asserting.begin(), asserting.end());
  return EngineStatus::holding(std::move(names));
}

std::string TapeRecorder::nameOf(const tidewell::BusyApp& app) const {
  const auto place = applications_.placeOf(app.id);
  return place ? inputs_.applications[*place].display : std::string();
}

std::vector<std::string> TapeRecorder::namesOf(const std::vector<std::string>& asserting) {
  if (!madeUp_) return asserting;
  std::vector<std::string> names;
  names.reserve(asserting.size());
  for (const std::string& name : asserting)
    names.push_back(madeUp_->of(name));
  // Who asks is always told in the order of the names.
  std::ranges::sort(names);
  return names;
}

tidewell::PropertyDictionary TapeRecorder::settings() {
  tidewell::Defaults& defaults = Prefs::shared().defaults();
  tidewell::PropertyDictionary values;
  for (const auto& [key, value] : registered_)
    values.emplace(key, std::visit(Reading{defaults, key}, value));
  if (!madeUp_) return values;
  values.insert_or_assign(
      std::string(keys::ignoredApps),
      namesOf(defaults.stringList(keys::ignoredApps).value_or(std::vector<std::string>())));
  return values;
}

void TapeRecorder::observeSystemSleep() {
  // As the engine does it, so that no tick comes between the two.
  const auto hop = [this](TapeMark::Kind kind) {
    return [&loop = *ports_.mainLoop, recorder = self_.make(), kind] {
      loop.async([recorder, kind] {
        if (recorder && recorder->isRecording()) recorder->add(kind);
      });
    };
  };
  ports_.sleepNotifications->observe(hop(TapeMark::Kind::willSleep), hop(TapeMark::Kind::didWake));
}

}  // namespace staylit
