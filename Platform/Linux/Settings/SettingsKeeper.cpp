#include "Platform/Linux/Settings/SettingsKeeper.h"

#include <condition_variable>
#include <cstdint>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/Linux/Settings/PendingEdits.h"
#include "Platform/Linux/Settings/SettingsSource.h"
#include "Tidewell/Log.h"

namespace platform {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr auto kBeforeAnotherTry = std::chrono::milliseconds(50);

}  // namespace

/// The keeper and the thread own it together, because either may end first.
struct SettingsKeeper::State {
  State(std::filesystem::path file, Timing times)
      : timing(times), source(std::move(file), times.settlingTime) {}

  const Timing timing;
  SettingsSource source;  ///< For the thread that serves.
  std::optional<SteadyClock::time_point> busySince;

  std::mutex mutex;  ///< Guards what follows.
  std::condition_variable changed;
  PendingEdits pending;
  tidewell::PropertyDictionary values;  ///< The values in the file.
  std::string savingProblem;
  std::optional<std::string> foreign;  ///< The text of others that nobody took yet.
  PendingEdits::Absence absence = PendingEdits::Absence::counts;
  bool isKnown = false;  ///< Whether the file could ever be read.
  std::uint64_t looksAsked = 0;
  std::uint64_t looksDone = 0;
  SteadyClock::time_point lookedAt{};
  SteadyClock::time_point due{};  ///< When the next attempt to save is due.
  std::uint64_t failures = 0;
  std::vector<std::string> complaints;
  bool isServing = false;
  bool isSaving = false;
  bool isFinishing = false;
  bool isStopping = false;
  bool isGivenUp = false;

  enum class Waiting { allowed, forbidden };
  void serve(Waiting waiting);
  void look(Lock& lock);
  void save(Lock& lock);
  void publish();
  SteadyClock::time_point dueAfter(const SettingsSource::Saving& saving);
};

/// Returns when there is nothing to do. For new work it has to be called again.
void SettingsKeeper::State::serve(Waiting waiting) {
  Lock lock(mutex);
  while (!isStopping) {
    if (looksDone < looksAsked) {
      look(lock);
    } else if (pending.isEmpty()) {
      break;
    } else if (SteadyClock::now() >= due) {
      save(lock);
    } else if (waiting == Waiting::forbidden) {
      break;
    } else {
      changed.wait_until(lock, due);
    }
  }
  isServing = false;
  changed.notify_all();
}

void SettingsKeeper::State::look(Lock& lock) {
  const std::uint64_t asked = looksAsked;
  lock.unlock();
  source.look();
  lock.lock();
  publish();
  if (isKnown) pending.follow(values, absence);
  looksDone = asked;
  lookedAt = SteadyClock::now();
  changed.notify_all();
}

void SettingsKeeper::State::save(Lock& lock) {
  const PendingEdits taken = pending;
  const bool isLastTry = isFinishing;
  isSaving = true;
  lock.unlock();
  const SettingsSource::Saving saving = source.save(taken);
  lock.lock();
  const SteadyClock::time_point next = dueAfter(saving);
  isSaving = false;
  publish();
  if (saving.state == SettingsSource::Saving::State::done) pending.settle(taken, values, absence);
  const bool isFailed = saving.state == SettingsSource::Saving::State::failed;
  if (isFailed && isLastTry) ++failures;
  // Saving that failed before the end began may succeed now.
  const bool isHurried = isFinishing && (saving.state == SettingsSource::Saving::State::done ||
                                         (isFailed && !isLastTry));
  due = isHurried ? SteadyClock::now() : next;
  changed.notify_all();
}

SteadyClock::time_point SettingsKeeper::State::dueAfter(const SettingsSource::Saving& saving) {
  const SteadyClock::time_point now = SteadyClock::now();
  if (saving.state == SettingsSource::Saving::State::done) {
    busySince.reset();
    return now + timing.writePause;
  }
  if (saving.state == SettingsSource::Saving::State::later) {
    if (!busySince) busySince = now;
    if (isFinishing || now - *busySince < timing.retryPause) return now + kBeforeAnotherTry;
  }
  source.complainOfSaving(saving.why);
  return now + timing.retryPause;
}

void SettingsKeeper::State::publish() {
  if (source.isKnown()) values = source.values();
  absence = source.absence();
  isKnown = source.isKnown();
  savingProblem = source.savingProblem();
  if (auto text = source.takeForeignText()) foreign = std::move(text);
  for (std::string& complaint : source.takeComplaints())
    complaints.push_back(std::move(complaint));
}

SettingsKeeper::SettingsKeeper(std::filesystem::path file, Timing timing)
    : timing_(timing), state_(std::make_shared<State>(std::move(file), timing)) {}

SettingsKeeper::~SettingsKeeper() {
  Lock lock(state_->mutex);
  if (!state_->isGivenUp) waitForSaving(lock);
  state_->isStopping = true;
  state_->changed.notify_all();
  const auto isIdle = [this] { return !state_->isServing; };
  if (!state_->changed.wait_for(lock, timing_.readTimeout, isIdle)) queue_.abandon();
}

std::optional<tidewell::PropertyValue> SettingsKeeper::value(std::string_view key) {
  Lock lock(state_->mutex);
  look(lock, Look::recent);
  std::optional<tidewell::PropertyValue> value;
  const auto found = state_->values.find(key);
  if (const tidewell::PropertyValue* pending = state_->pending.find(key)) {
    value = *pending;
  } else if (found != state_->values.end()) {
    value = found->second;
  }
  sayComplaints(lock);
  return value;
}

void SettingsKeeper::set(std::string_view key, tidewell::PropertyValue value) {
  Lock lock(state_->mutex);
  look(lock, Look::now);
  state_->pending.set(key, std::move(value), state_->isKnown ? &state_->values : nullptr);
  if (!state_->pending.isEmpty()) start(lock);
  sayComplaints(lock);
}

std::string SettingsKeeper::savingProblem() {
  const Lock lock(state_->mutex);
  return state_->savingProblem;
}

std::optional<std::string> SettingsKeeper::takeForeignText() {
  const Lock lock(state_->mutex);
  return std::exchange(state_->foreign, std::nullopt);
}

/// Asks the thread to look at the file, and waits. Does not wait for a thread that is busy or
/// hangs.
void SettingsKeeper::look(Lock& lock, Look kind) {
  const bool isAtWork = state_->isSaving || state_->looksDone < state_->looksAsked;
  const bool isFresh = SteadyClock::now() - state_->lookedAt < timing_.freshFor;
  if (isAtWork || (kind == Look::recent && isFresh)) return;
  const std::uint64_t wanted = ++state_->looksAsked;
  start(lock);
  state_->changed.wait_for(lock, wanted == 1 ? timing_.firstReadTimeout : timing_.readTimeout,
                           [&] { return state_->looksDone >= wanted; });
}

void SettingsKeeper::start(Lock& lock) {
  state_->changed.notify_all();
  if (std::exchange(state_->isServing, true)) return;
  lock.unlock();
  // When no thread can be started, the queue runs the work here.
  queue_.async([state = state_, keeper = std::this_thread::get_id()] {
    const bool isHere = std::this_thread::get_id() == keeper;
    state->serve(isHere ? State::Waiting::forbidden : State::Waiting::allowed);
  });
  lock.lock();
}

void SettingsKeeper::finish() {
  Lock lock(state_->mutex);
  const bool isSettled = waitForSaving(lock);
  if (!isSettled) {
    state_->isGivenUp = true;
    state_->complaints.push_back("settings could not be saved to " +
                                 state_->source.path().string() +
                                 " in time; what was changed last is lost");
  }
  sayComplaints(lock);
}

/// Returns whether everything was saved, or could not be saved.
bool SettingsKeeper::waitForSaving(Lock& lock) {
  if (state_->pending.isEmpty()) return true;
  const std::uint64_t failures = state_->failures;
  state_->isFinishing = true;
  state_->due = SteadyClock::now();
  start(lock);
  const bool isSettled = state_->changed.wait_for(lock, timing_.finishTimeout, [&] {
    return state_->pending.isEmpty() || state_->failures > failures;
  });
  state_->isFinishing = false;
  return isSettled;
}

void SettingsKeeper::sayComplaints(Lock& lock) {
  if (state_->complaints.empty()) return;
  const std::vector<std::string> complaints = std::exchange(state_->complaints, {});
  lock.unlock();
  for (const std::string& complaint : complaints)
    tidewell::Log::error(complaint);
  lock.lock();
}

}  // namespace platform
