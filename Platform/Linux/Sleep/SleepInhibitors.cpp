#include "Platform/Linux/Sleep/SleepInhibitors.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

#include "Platform/Linux/Sleep/CinnamonIdleTime.h"
#include "Platform/Linux/Sleep/LxqtIdleTime.h"
#include "Platform/Linux/Sleep/MateIdleTime.h"
#include "Platform/Linux/Sleep/XfceIdleTime.h"
#include "Tidewell/Words.h"

namespace platform {

using tidewell::toBePhrased;

namespace {

constexpr std::chrono::seconds kLookAgain{10};
/// Longer than two attempts of the engine are apart.
constexpr std::chrono::seconds kKeepUnanswered{5};
constexpr tidewell::Seconds kLeastDelay{0.1};
constexpr tidewell::Seconds kTolerance{0.25};

}  // namespace

SleepInhibitors::SleepInhibitors(Bus& systemBus, Bus& sessionBus, tidewell::MainLoop& loop,
                                 SleepAssertion::Now now, FindXServer findXServer,
                                 std::string settingsTool)
    : systemBus_(systemBus),
      sessionBus_(sessionBus),
      loop_(loop),
      now_(std::move(now)),
      findXServer_(std::move(findXServer)),
      launcher_([](int) { return std::string(); }),
      desktopSettings_(launcher_, std::move(settingsTool)),
      services_(systemBus, sessionBus,
                [this](InhibitMechanism* mechanism, bool present) {
                  serviceChanged(mechanism, present);
                }),
      readBack_(now_, [this](InhibitMechanism& mechanism, Moment askedAt, const auto& listed) {
        return compare(mechanism, askedAt, listed);
      }) {}

SleepInhibitors::~SleepInhibitors() = default;

SleepInhibitors::Creation SleepInhibitors::createAssertion(tidewell::AssertionKind kind,
                                                           const std::string& name) {
  const SleepServices::Row wanted = row(kind);
  Live live{assertionOf(kind, name)};
  if (!wanted.mechanisms.empty()) {
    const int error = live.assertion->hold(wanted.mechanisms);
    // One that was not answered before may not be due to be asked for again.
    const bool isWaiting = error == 0 && !live.assertion->isHeld();
    lastError_ = isWaiting ? -ETIMEDOUT : error;
    if (lastError_ < 0) return failed(std::move(live.assertion), lastError_);
  } else if (wanted.error < 0) {
    lastError_ = wanted.error;
    return {wanted.error, 0};
  } else {
    lastError_ = 0;
    live.recordedId = recorded_.createAssertion(kind, name).id;
  }
  const Creation creation{0, add(std::move(live))};
  keepOff();
  attendLater();
  return creation;
}

/// The one that nobody has answered yet, else a new one.
std::shared_ptr<SleepAssertion> SleepInhibitors::assertionOf(tidewell::AssertionKind kind,
                                                             const std::string& name) {
  const auto found = unanswered_.find(kind);
  if (found == unanswered_.end())
    return std::make_shared<SleepAssertion>(kind, name, now_, [this] { attend(); });
  auto assertion = std::move(found->second.assertion);
  unanswered_.erase(found);
  assertion->rename(name);
  return assertion;
}

SleepInhibitors::Creation SleepInhibitors::failed(std::shared_ptr<SleepAssertion> assertion,
                                                  std::int32_t error) {
  if (error == -ETIMEDOUT) {
    const tidewell::AssertionKind kind = assertion->kind();
    unanswered_[kind] = {std::move(assertion), now_()};
    attendLater();
  }
  return {error, 0};
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
  live.assertion->rename(name);
  hold(live);
  attendLater();
}

void SleepInhibitors::releaseAssertion(std::uint32_t id) {
  const auto found = live_.find(id);
  if (found == live_.end()) return;
  if (found->second.recordedId != 0) recorded_.releaseAssertion(found->second.recordedId);
  const bool wasOfDisplay = isOfDisplay();
  // Cinnamon looks when the last hold ends, the others later.
  if (live_.size() == 1)
    restartCinnamonIdleTime(systemBus_, sessionBus_, desktopSettings_, findXServer_);
  live_.erase(found);
  if (live_.empty()) restartXfceIdleTime(sessionBus_, findXServer_);
  if (wasOfDisplay && !isOfDisplay()) restartMateIdleTime(sessionBus_, findXServer_);
  attendLater();
}

bool SleepInhibitors::isGranted() {
  return std::all_of(live_.begin(), live_.end(), [](const auto& entry) {
    const SleepAssertion& assertion = *entry.second.assertion;
    return assertion.kind() != tidewell::AssertionKind::system || assertion.isHeld();
  });
}

std::string SleepInhibitors::whyNotGranted() {
  if (!live_.empty() && isGranted()) return "";
  switch (lastError_) {
    case 0:
      // TRANSLATORS: the reasons follow "No service of the system grants Staylit's hold: ".
      return toBePhrased("neither a login service nor a desktop's power service is here");
    case -EACCES:
    case -EPERM:
      return toBePhrased(
          "the service that would have to grant it refuses; without polkit the login service "
          "grants it to root alone");
    case -ETIMEDOUT:
      return toBePhrased("the service that would have to grant it does not answer");
    default:
      return toBePhrased("no service can be reached that would grant it");
  }
}

std::vector<SleepInhibitors::LiveAssertion> SleepInhibitors::liveAssertions() {
  std::vector<LiveAssertion> assertions;
  for (const auto& [id, live] : live_)
    assertions.push_back({live.assertion->kind(), live.assertion->reason(), grants(live)});
  return assertions;
}

std::vector<SleepInhibitors::Grant> SleepInhibitors::grants(const Live& live) {
  std::vector<Grant> grants;
  for (const InhibitMechanism* mechanism : services_.all()) {
    if (!live.assertion->has(*mechanism)) continue;
    const auto seen = readBack_.lastSeen(*mechanism);
    // A list that is older than the grant says nothing about it; each new name brings a new grant.
    const bool isOfThis = seen && *seen >= live.assertion->heededSince(*mechanism);
    grants.push_back({mechanism->serviceName(), isOfThis ? seen : std::nullopt});
  }
  return grants;
}

void SleepInhibitors::serviceChanged(InhibitMechanism* mechanism, bool present) {
  if (mechanism != nullptr && !present) readBack_.forget(*mechanism);
  for (auto& [id, live] : live_) {
    if (mechanism != nullptr && present) live.assertion->returned(*mechanism);
    if (mechanism != nullptr && !present) live.assertion->lost(*mechanism);
    hold(live);
  }
  for (auto& [kind, unanswered] : unanswered_) {
    if (mechanism != nullptr && present) unanswered.assertion->returned(*mechanism);
    if (mechanism != nullptr && !present) unanswered.assertion->lost(*mechanism);
  }
  keepOff();
  attendLater();
}

SleepServices::Row SleepInhibitors::row(tidewell::AssertionKind kind) {
  SleepServices::Row result = services_.row(kind);
  // Nothing announces that a bus in trouble works again, so it is tried again.
  if (result.error < 0) lookAgain_ = now_() + kLookAgain;
  return result;
}

/// Asks the services that decide now for what is due.
void SleepInhibitors::hold(Live& live) {
  const SleepServices::Row wanted = row(live.assertion->kind());
  const int error = live.assertion->hold(wanted.mechanisms);
  lastError_ = wanted.mechanisms.empty() ? wanted.error : error;
  if (live.recordedId == 0 || !live.assertion->isHeld()) return;
  recorded_.releaseAssertion(std::exchange(live.recordedId, 0));
}

bool SleepInhibitors::compare(InhibitMechanism& mechanism, Moment askedAt,
                              const ReadBack::Reasons& listed) {
  bool isComplete = true;
  ReadBack::Reasons left = listed;
  for (auto& [id, live] : live_) {
    if (!live.assertion->isMissing(mechanism, askedAt, left)) continue;
    isComplete = false;
    hold(live);
  }
  attendLater();
  return isComplete;
}

std::optional<SleepInhibitors::Moment> SleepInhibitors::readBackDue(
    const InhibitMechanism& mechanism) const {
  std::optional<Moment> youngest;
  for (const auto& [id, live] : live_) {
    if (const auto since = live.assertion->heededSince(mechanism)) {
      youngest = youngest ? std::max(*youngest, *since) : *since;
    }
  }
  if (!youngest) return std::nullopt;
  return readBack_.due(mechanism, *youngest);
}

void SleepInhibitors::readBack() {
  SleepAssertion::Mechanisms all = services_.all();
  // The services that wait longest come first, because each list that is asked for delays the
  // others.
  std::sort(all.begin(), all.end(), [this](const auto* left, const auto* right) {
    return readBack_.lastAsked(*left) < readBack_.lastAsked(*right);
  });
  for (InhibitMechanism* mechanism : all) {
    const auto due = readBackDue(*mechanism);
    if (due && *due <= now_()) readBack_.ask(*mechanism);
  }
}

bool SleepInhibitors::isOfDisplay() const {
  return std::any_of(live_.begin(), live_.end(), [](const auto& entry) {
    return entry.second.assertion->kind() == tidewell::AssertionKind::display;
  });
}

void SleepInhibitors::keepOff() {
  keepOffAgain_.reset();
  if (live_.empty()) return;
  const auto kind =
      isOfDisplay() ? tidewell::AssertionKind::display : tidewell::AssertionKind::system;
  const auto pause = keepOffLxqt(sessionBus_, findXServer_, kind);
  if (pause) keepOffAgain_ = now_() + std::chrono::duration_cast<Moment::duration>(*pause);
}

void SleepInhibitors::attendLater() {
  std::optional<Moment> next;
  const auto consider = [&next](std::optional<Moment> due) {
    if (due) next = next ? std::min(*next, *due) : *due;
  };
  for (const auto& [id, live] : live_)
    consider(live.assertion->nextDue());
  for (const InhibitMechanism* mechanism : services_.all())
    consider(readBackDue(*mechanism));
  for (const auto& [kind, unanswered] : unanswered_)
    consider(unanswered.askedAt + kKeepUnanswered);
  if (!live_.empty()) consider(lookAgain_);
  if (!live_.empty()) consider(keepOffAgain_);
  attention_.reset();
  if (!next) return;
  const tidewell::Seconds delay = std::max(tidewell::Seconds(*next - now_()), kLeastDelay);
  attention_ = loop_.scheduleRepeating(delay, [this] { attend(); });
  attention_->setTolerance(kTolerance);
}

void SleepInhibitors::attend() {
  if (lookAgain_ && *lookAgain_ <= now_()) lookAgain_.reset();
  std::erase_if(unanswered_, [now = now_()](const auto& entry) {
    return entry.second.askedAt + kKeepUnanswered <= now;
  });
  for (auto& [id, live] : live_)
    hold(live);
  if (keepOffAgain_ && *keepOffAgain_ <= now_()) keepOff();
  readBack();
  attendLater();
}

}  // namespace platform
