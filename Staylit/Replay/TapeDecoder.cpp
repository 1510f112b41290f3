#include "Staylit/Replay/TapeDecoder.h"

#include <cmath>
#include <utility>

#include "Staylit/Replay/TapeFormat.h"
#include "Tidewell/ForeignText.h"

namespace staylit {

using tapeFormat::Frame;
namespace part = tapeFormat::part;

namespace {

/// Within these limits (36 and 146 years) times can be added and subtracted without a thought.
constexpr std::int64_t kLatestMoment = std::int64_t{1} << 60;
constexpr std::int64_t kLatestWallTime = std::int64_t{1} << 62;

/// The engine reads its clock twice in a tick, and never as far apart as this.
constexpr std::chrono::hours kLongestTick{24};

void grow(std::uint64_t& counter, std::int64_t by) {
  counter += static_cast<std::uint64_t>(by);
}

}  // namespace

std::optional<TapeEvent> TapeDecoder::next() {
  if (isDamaged_ || in_.isAtEnd()) return std::nullopt;
  std::optional<TapeEvent> event = read();
  isDamaged_ = in_.isBroken() || !event;
  return isDamaged_ ? std::nullopt : event;
}

std::optional<TapeEvent> TapeDecoder::read() {
  const auto frame = static_cast<Frame>(in_.byte());
  if (frame == Frame::began) return readBegan();
  if (!hasBegun_) return std::nullopt;
  if (frame == Frame::tick) return readTick();
  if (frame == Frame::clockSet) {
    const auto at = readMoment();
    const auto wallTime = readWallTime();
    if (!at || !wallTime) return std::nullopt;
    return TapeClockSet{*at, *wallTime};
  }
  if (frame < Frame::paused || frame > Frame::ended) return std::nullopt;
  const auto at = readMoment();
  if (!at) return std::nullopt;
  const unsigned kind = static_cast<unsigned>(frame) - static_cast<unsigned>(Frame::paused);
  return TapeMark{*at, static_cast<TapeMark::Kind>(kind)};
}

TapeEvent TapeDecoder::readBegan() {
  texts_.clear();
  inputs_ = {};
  outcome_ = EngineStatus::idle();
  last_ = {};
  lastInterval_ = {};
  hasBegun_ = true;
  ++version_;
  TapeBegan began;
  began.at = readMoment().value_or(tidewell::Moment());
  began.wallTime = readWallTime().value_or(tidewell::WallTime());
  began.program = readText();
  began.run = in_.number();
  const std::uint64_t flags = in_.number();
  began.isFirst = (flags & tapeFormat::kIsFirst) != 0;
  began.isMadeUp = (flags & tapeFormat::kIsMadeUp) != 0;
  return began;
}

TapeEvent TapeDecoder::readTick() {
  TapedTick tick;
  tick.at = readMoment().value_or(tidewell::Moment());
  const std::uint64_t parts = in_.numberUpTo(part::all);
  if (parts & part::quietSince) tick.quietSince = readMomentAbout(tick.at);
  if (parts & part::quietJudgedAt) tick.quietJudgedAt = readMomentAbout(tick.at);
  if (parts & part::asserting) inputs_.asserting = readTexts();
  if (parts & part::power) readPower();
  if (parts & part::settings) readSettings();
  if (parts & part::names) readNames();
  if (parts & part::presence) readPresence();
  if (parts & part::outcome) readOutcome();
  readCounters();
  tick.outcome = outcome_;
  return tick;
}

std::optional<tidewell::Moment> TapeDecoder::readMoment() {
  // Unsigned numbers may overflow, and what overflows is outside of the limits or goes back.
  const auto change = static_cast<std::uint64_t>(in_.signedNumber());
  const auto interval =
      static_cast<std::int64_t>(static_cast<std::uint64_t>(lastInterval_.count()) + change);
  const std::int64_t last = last_.time_since_epoch().count();
  if (interval < 0 || interval > kLatestMoment - last) {
    in_.breakOff();
    return std::nullopt;
  }
  lastInterval_ = std::chrono::nanoseconds(interval);
  last_ += lastInterval_;
  return last_;
}

std::optional<tidewell::WallTime> TapeDecoder::readWallTime() {
  const std::int64_t nanoseconds = in_.signedNumber();
  if (nanoseconds < 0 || nanoseconds > kLatestWallTime) {
    in_.breakOff();
    return std::nullopt;
  }
  return tidewell::WallTime(std::chrono::nanoseconds(nanoseconds));
}

std::optional<tidewell::Moment> TapeDecoder::readMomentAbout(tidewell::Moment at) {
  const std::chrono::nanoseconds distance(in_.signedNumber());
  if (distance >= -kLongestTick && distance <= kLongestTick) return at + distance;
  in_.breakOff();
  return std::nullopt;
}

std::string TapeDecoder::readText() {
  const std::uint64_t number = in_.numberUpTo(texts_.size());
  if (number < texts_.size()) return texts_[number];
  if (texts_.size() >= tapeFormat::kMostTexts) in_.breakOff();
  std::string text = tidewell::cleaned(in_.text());
  if (!in_.isBroken()) texts_.push_back(text);
  return text;
}

std::vector<std::string> TapeDecoder::readTexts() {
  std::vector<std::string> texts;
  for (std::uint64_t left = in_.numberUpTo(tapeFormat::kMostElements); left > 0; --left) {
    texts.push_back(readText());
    if (in_.isBroken()) return {};
  }
  return texts;
}

void TapeDecoder::readPower() {
  const std::uint64_t flags = in_.number();
  inputs_.power.onAC = (flags & tapeFormat::kOnAC) != 0;
  inputs_.power.lowPowerMode = (flags & tapeFormat::kLowPowerMode) != 0;
  inputs_.power.hasBattery = (flags & tapeFormat::kHasBattery) != 0;
  inputs_.power.percentage = in_.signedNumber();
}

void TapeDecoder::readSettings() {
  inputs_.settings.clear();
  for (std::uint64_t left = in_.numberUpTo(tapeFormat::kMostElements); left > 0; --left) {
    const std::string key = readText();
    tidewell::PropertyValue value = readSetting();
    if (in_.isBroken()) return;
    inputs_.settings.insert_or_assign(key, std::move(value));
  }
}

tidewell::PropertyValue TapeDecoder::readSetting() {
  using Kind = tapeFormat::SettingKind;
  switch (static_cast<Kind>(in_.byte())) {
    case Kind::truth:
      return in_.byte() != 0;
    case Kind::integer:
      return in_.signedNumber();
    case Kind::real: {
      const double value = in_.real();
      if (std::isfinite(value)) return value;
      break;
    }
    case Kind::texts:
      return readTexts();
  }
  in_.breakOff();
  return {};
}

void TapeDecoder::readNames() {
  ++version_;
  for (std::uint64_t left = in_.numberUpTo(tapeFormat::kMostApplications); left > 0; --left) {
    const std::uint64_t place = in_.numberUpTo(inputs_.applications.size());
    if (place == tapeFormat::kMostApplications) in_.breakOff();
    const bool hasBundle = in_.byte() != 0;
    std::optional<std::string> bundleID;
    if (hasBundle) bundleID = readText();
    std::string executable = readText();
    std::string display = readText();
    if (in_.isBroken()) return;
    if (place == inputs_.applications.size()) inputs_.applications.emplace_back();
    TapedApplication& application = inputs_.applications[place];
    application.executable = std::move(executable);
    application.bundleID = std::move(bundleID);
    application.display = std::move(display);
  }
}

void TapeDecoder::readPresence() {
  for (std::uint64_t left = in_.numberUpTo(tapeFormat::kMostApplications); left > 0; --left) {
    TapedApplication* application = applicationAt(in_.number());
    if (!application) return;
    application->isPresent = !application->isPresent;
  }
}

void TapeDecoder::readCounters() {
  namespace counter = tapeFormat::counter;
  std::uint64_t next = 0;
  for (std::uint64_t left = in_.numberUpTo(tapeFormat::kMostApplications); left > 0; --left) {
    const std::uint64_t head = in_.number();
    const std::uint64_t place = next + (head >> counter::bits);
    TapedApplication* application = applicationAt(place);
    if (!application) return;
    if (head & counter::cpu) grow(application->usage.cpuNanos, in_.signedNumber());
    if (head & counter::disk) grow(application->usage.diskBytes, in_.signedNumber());
    if (head & counter::net) grow(application->usage.netBytes, in_.signedNumber());
    next = place + 1;
  }
}

void TapeDecoder::readOutcome() {
  using Outcome = tapeFormat::Outcome;
  switch (static_cast<Outcome>(in_.byte())) {
    case Outcome::holding:
      outcome_ = EngineStatus::holding(readTexts());
      return;
    case Outcome::winding:
      outcome_ = EngineStatus::winding(0);
      return;
    case Outcome::blocked:
      outcome_ = EngineStatus::blocked(readText());
      return;
    case Outcome::idle:
      outcome_ = EngineStatus::idle();
      return;
    case Outcome::paused:
      outcome_ = EngineStatus::paused();
      return;
  }
  in_.breakOff();
}

TapedApplication* TapeDecoder::applicationAt(std::uint64_t place) {
  if (!in_.isBroken() && place < inputs_.applications.size()) {
    return &inputs_.applications[place];
  }
  in_.breakOff();
  return nullptr;
}

}  // namespace staylit
