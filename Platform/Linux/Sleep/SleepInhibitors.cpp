#include "Platform/Linux/Sleep/SleepInhibitors.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

namespace platform {
namespace {

constexpr std::uint32_t kLevelOn = 255;
/// Longer than any service lets a wish lie before it heeds it.
constexpr tidewell::Seconds kAttention{7};

std::optional<HoldKind> holdKind(std::string_view type) {
  if (type == "PreventUserIdleSystemSleep") return HoldKind::system;
  if (type == "PreventUserIdleDisplaySleep") return HoldKind::display;
  return std::nullopt;
}

}  // namespace

SleepInhibitors::SleepInhibitors(Bus& systemBus, Bus& sessionBus, tidewell::MainLoop& loop)
    : loop_(loop),
      services_(systemBus, sessionBus, [this](const InhibitMechanism* mechanism, bool present) {
        serviceChanged(mechanism, present);
      }) {}

SleepInhibitors::~SleepInhibitors() = default;

SleepInhibitors::Creation SleepInhibitors::createAssertion(std::string_view type,
                                                           std::uint32_t level,
                                                           const std::string& name) {
  const std::optional<HoldKind> kind = holdKind(type);
  if (!kind || level != kLevelOn) return {-EINVAL, 0};
  const SleepServices::Row row = services_.row(*kind);
  Live live{std::make_shared<SleepAssertion>(*kind, name)};
  if (!row.mechanisms.empty()) {
    if (const int error = live.assertion->hold(row.mechanisms); error < 0) return {error, 0};
  } else if (row.error < 0) {
    return {row.error, 0};
  } else {
    live.recordedId = recorded_.createAssertion(type, level, name).id;
  }
  const Creation creation{0, add(std::move(live))};
  attendLater();
  return creation;
}

std::uint32_t SleepInhibitors::add(Live live) {
  do {
    ++lastId_;
  } while (lastId_ == 0 || live_.contains(lastId_));
  live_.emplace(lastId_, std::move(live));
  return lastId_;
}

void SleepInhibitors::setAssertionName(std::uint32_t id, const std::string& name) {
  const auto found = live_.find(id);
  if (found == live_.end()) return;
  Live& live = found->second;
  if (live.recordedId != 0) recorded_.setAssertionName(live.recordedId, name);
  live.assertion->rename(name, services_.row(live.assertion->kind()).mechanisms);
  forgetRecordIfHeld(live);
  attendLater();
}

void SleepInhibitors::releaseAssertion(std::uint32_t id) {
  const auto found = live_.find(id);
  if (found == live_.end()) return;
  if (found->second.recordedId != 0) recorded_.releaseAssertion(found->second.recordedId);
  live_.erase(found);
}

void SleepInhibitors::serviceChanged(const InhibitMechanism* mechanism, bool present) {
  for (auto& [id, live] : live_) {
    if (mechanism != nullptr && !present) live.assertion->lost(*mechanism);
    holdAgain(live);
  }
  attendLater();
}

void SleepInhibitors::holdAgain(Live& live) {
  const SleepServices::Row row = services_.row(live.assertion->kind());
  if (row.mechanisms.empty()) return;
  live.assertion->hold(row.mechanisms);
  forgetRecordIfHeld(live);
}

void SleepInhibitors::forgetRecordIfHeld(Live& live) {
  if (live.recordedId == 0 || !live.assertion->isHeld()) return;
  recorded_.releaseAssertion(std::exchange(live.recordedId, 0));
}

void SleepInhibitors::attendLater() {
  const bool isNeeded = std::any_of(live_.begin(), live_.end(), [](const auto& entry) {
    return entry.second.assertion->isSettling() || !entry.second.assertion->isComplete();
  });
  if (isNeeded) attention_ = loop_.scheduleRepeating(kAttention, [this] { attend(); });
}

void SleepInhibitors::attend() {
  attention_.reset();
  for (auto& [id, live] : live_) {
    live.assertion->settle();
    if (!live.assertion->isComplete()) holdAgain(live);
  }
  attendLater();
}

}  // namespace platform
