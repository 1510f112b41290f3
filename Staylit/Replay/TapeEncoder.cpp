#include "Staylit/Replay/TapeEncoder.h"

#include <utility>
#include <variant>

#include "Staylit/Replay/TapeFormat.h"

namespace staylit {

using tapeFormat::Frame;
namespace part = tapeFormat::part;

namespace {

std::uint8_t codeOf(Frame frame) {
  return static_cast<std::uint8_t>(frame);
}

std::int64_t difference(std::uint64_t now, std::uint64_t before) {
  return static_cast<std::int64_t>(now - before);
}

bool haveSameNames(const TapedApplication& left, const TapedApplication& right) {
  return left.executable == right.executable && left.bundleID == right.bundleID &&
         left.display == right.display;
}

std::uint64_t changedCounters(const TapedUsage& now, const TapedUsage& before) {
  namespace counter = tapeFormat::counter;
  return (now.cpuNanos == before.cpuNanos ? 0 : counter::cpu) |
         (now.diskBytes == before.diskBytes ? 0 : counter::disk) |
         (now.netBytes == before.netBytes ? 0 : counter::net);
}

/// As a tape keeps it.
EngineStatus withoutCountdown(const EngineStatus& status) {
  return std::holds_alternative<EngineStatus::Winding>(status.value) ? EngineStatus::winding(0)
                                                                     : status;
}

}  // namespace

void TapeEncoder::begin(const TapeBegan& began) {
  texts_.clear();
  told_ = {};
  toldOutcome_ = EngineStatus::idle();
  last_ = {};
  lastInterval_ = {};
  out_.byte(codeOf(Frame::began));
  putMoment(began.at);
  out_.signedNumber(began.wallTime.time_since_epoch().count());
  putText(began.program);
  out_.number(began.run);
  out_.number((began.isFirst ? tapeFormat::kIsFirst : 0) |
              (began.isMadeUp ? tapeFormat::kIsMadeUp : 0));
}

void TapeEncoder::add(const TapedTick& tick, const TapedInputs& inputs) {
  findChanges(inputs.applications);
  const std::uint64_t parts = partsOf(tick, inputs);
  out_.byte(codeOf(Frame::tick));
  putMoment(tick.at);
  out_.number(parts);
  if (tick.quietSince) out_.signedNumber((*tick.quietSince - tick.at).count());
  if (tick.quietJudgedAt) out_.signedNumber((*tick.quietJudgedAt - tick.at).count());
  if (parts & part::asserting) putTexts(told_.asserting = inputs.asserting);
  if (parts & part::power) putPower(inputs.power);
  if (parts & part::settings) putSettings(inputs.settings);
  if (parts & part::names) putNames(inputs.applications);
  if (parts & part::presence) putPresence(inputs.applications);
  if (parts & part::outcome) putOutcome(tick.outcome);
  putCounters(inputs.applications);
}

void TapeEncoder::add(const TapeMark& mark) {
  out_.byte(static_cast<std::uint8_t>(codeOf(Frame::paused) + static_cast<unsigned>(mark.kind)));
  putMoment(mark.at);
}

void TapeEncoder::add(const TapeClockSet& clockSet) {
  out_.byte(codeOf(Frame::clockSet));
  putMoment(clockSet.at);
  out_.signedNumber(clockSet.wallTime.time_since_epoch().count());
}

void TapeEncoder::putMoment(tidewell::Moment at) {
  const std::chrono::nanoseconds interval = at - last_;
  out_.signedNumber((interval - lastInterval_).count());
  lastInterval_ = interval;
  last_ = at;
}

void TapeEncoder::putText(const std::string& text) {
  const auto [found, isNew] = texts_.try_emplace(text, texts_.size());
  out_.number(found->second);
  if (isNew) out_.text(text);
}

void TapeEncoder::putTexts(const std::vector<std::string>& texts) {
  out_.number(texts.size());
  for (const std::string& text : texts)
    putText(text);
}

void TapeEncoder::putPower(const tidewell::PowerState& power) {
  out_.number((power.onAC ? tapeFormat::kOnAC : 0) |
              (power.lowPowerMode ? tapeFormat::kLowPowerMode : 0) |
              (power.hasBattery ? tapeFormat::kHasBattery : 0));
  out_.signedNumber(power.percentage);
  told_.power = power;
}

void TapeEncoder::putSetting(const std::string& key, const tidewell::PropertyValue& value) {
  using Kind = tapeFormat::SettingKind;
  putText(key);
  const auto kind = [this](Kind code) { out_.byte(static_cast<std::uint8_t>(code)); };
  if (const auto* truth = std::get_if<bool>(&value)) {
    kind(Kind::truth);
    out_.byte(*truth ? 1 : 0);
  } else if (const auto* integer = std::get_if<std::int64_t>(&value)) {
    kind(Kind::integer);
    out_.signedNumber(*integer);
  } else if (const auto* real = std::get_if<double>(&value)) {
    kind(Kind::real);
    out_.real(*real);
  } else {
    const auto* texts = std::get_if<std::vector<std::string>>(&value);
    kind(Kind::texts);
    putTexts(texts ? *texts : std::vector<std::string>());
  }
}

void TapeEncoder::putSettings(const tidewell::PropertyDictionary& settings) {
  out_.number(settings.size());
  for (const auto& [key, value] : settings)
    putSetting(key, value);
  told_.settings = settings;
}

void TapeEncoder::putNames(const std::vector<TapedApplication>& applications) {
  out_.number(renamed_.size());
  for (const std::size_t place : renamed_) {
    const TapedApplication& application = applications[place];
    out_.number(place);
    out_.byte(application.bundleID ? 1 : 0);
    if (application.bundleID) putText(*application.bundleID);
    putText(application.executable);
    putText(application.display);
    if (place == told_.applications.size()) told_.applications.emplace_back();
    TapedApplication& told = told_.applications[place];
    told.executable = application.executable;
    told.bundleID = application.bundleID;
    told.display = application.display;
  }
}

void TapeEncoder::putPresence(const std::vector<TapedApplication>& applications) {
  out_.number(cameOrWent_.size());
  for (const std::size_t place : cameOrWent_) {
    out_.number(place);
    told_.applications[place].isPresent = applications[place].isPresent;
  }
}

void TapeEncoder::putCounters(const std::vector<TapedApplication>& applications) {
  namespace counter = tapeFormat::counter;
  out_.number(counted_.size());
  std::size_t next = 0;
  for (const std::size_t place : counted_) {
    const TapedUsage& now = applications[place].usage;
    TapedUsage& before = told_.applications[place].usage;
    const std::uint64_t changed = changedCounters(now, before);
    out_.number(((place - next) << counter::bits) | changed);
    if (changed & counter::cpu) out_.signedNumber(difference(now.cpuNanos, before.cpuNanos));
    if (changed & counter::disk) out_.signedNumber(difference(now.diskBytes, before.diskBytes));
    if (changed & counter::net) out_.signedNumber(difference(now.netBytes, before.netBytes));
    before = now;
    next = place + 1;
  }
}

void TapeEncoder::putOutcome(const EngineStatus& outcome) {
  out_.byte(static_cast<std::uint8_t>(outcome.value.index()));
  if (const auto* holding = std::get_if<EngineStatus::Holding>(&outcome.value)) {
    putTexts(holding->names);
  } else if (const auto* blocked = std::get_if<EngineStatus::Blocked>(&outcome.value)) {
    putText(blocked->reason);
  }
  toldOutcome_ = withoutCountdown(outcome);
}

std::uint64_t TapeEncoder::partsOf(const TapedTick& tick, const TapedInputs& inputs) const {
  return (tick.quietSince ? part::quietSince : 0) | (tick.quietJudgedAt ? part::quietJudgedAt : 0) |
         (inputs.asserting == told_.asserting ? 0 : part::asserting) |
         (inputs.power == told_.power ? 0 : part::power) |
         (inputs.settings == told_.settings ? 0 : part::settings) |
         (renamed_.empty() ? 0 : part::names) | (cameOrWent_.empty() ? 0 : part::presence) |
         (withoutCountdown(tick.outcome) == toldOutcome_ ? 0 : part::outcome);
}

void TapeEncoder::findChanges(const std::vector<TapedApplication>& applications) {
  static const TapedApplication nothing;
  renamed_.clear();
  cameOrWent_.clear();
  counted_.clear();
  for (std::size_t place = 0; place < applications.size(); ++place) {
    const TapedApplication& now = applications[place];
    const bool isNew = place >= told_.applications.size();
    const TapedApplication& before = isNew ? nothing : told_.applications[place];
    if (isNew || !haveSameNames(now, before)) renamed_.push_back(place);
    if (now.isPresent != before.isPresent) cameOrWent_.push_back(place);
    if (now.usage != before.usage) counted_.push_back(place);
  }
}

}  // namespace staylit
