#include "Staylit/StaylitEngine.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Staylit/Prefs.h"
#include "Tidewell/BatteryMonitor.h"
#include "Tidewell/Words.h"

namespace staylit {

using tidewell::Moment;
using tidewell::Seconds;
using tidewell::Words;

namespace {

std::int64_t graceSeconds() {
  return std::clamp(Prefs::shared().defaults().integer(keys::graceSeconds), kShortestGraceSeconds,
                    kLongestGraceSeconds);
}

bool keepScreenOn() {
  return Prefs::shared().defaults().boolean(keys::keepScreenOn);
}

}  // namespace

StaylitEngine::StaylitEngine(tidewell::Ports& ports)
    : ports_(ports),
      status_(EngineStatus::idle()),
      busyApps_({}),
      assertingApps_({}),
      powerState_(tidewell::BatteryMonitor::current()),
      monitor_(ports),
      sleep_(*ports.powerManagement) {}

StaylitEngine::~StaylitEngine() = default;

void StaylitEngine::start() {
  observeSystemSleep();
  timer_ = ports_.mainLoop->scheduleRepeating(kInterval,
                                              [&loop = *ports_.mainLoop, engine = self_.make()] {
                                                loop.async([engine] {
                                                  if (engine) engine->tick();
                                                });
                                              });
  timer_->setTolerance(kTolerance);
  tick();
}

void StaylitEngine::tick() {
  if (isPaused_) return;
  powerState_.set(tidewell::BatteryMonitor::current());
  busyApps_.set(monitor_.tick(Prefs::shared().activityThresholds()));
  assertingApps_.set(monitor_.assertingApps());
  const tidewell::PowerPolicy policy = Prefs::shared().powerPolicy();
  if (powerState_.get().blockedReason(policy)) {
    passBlocked(policy);
  } else if (busyApps_.get().empty() && assertingApps_.get().empty()) {
    passQuiet();
  } else {
    passWorking();
  }
}

void StaylitEngine::stopTimer() {
  if (timer_) timer_->invalidate();
  timer_.reset();
}

void StaylitEngine::releaseHold() {
  sleep_.release();
}

void StaylitEngine::setPaused(bool paused) {
  isPaused_ = paused;
  if (paused) {
    sleep_.release();
    quietSince_.reset();
    status_.set(EngineStatus::paused());
  } else {
    monitor_.reset();
    status_.set(EngineStatus::idle());
    tick();
  }
}

void StaylitEngine::observeSystemSleep() {
  // Both actions run from the main loop, and the engine may be gone by then.
  const auto hop = [this](void (*action)(StaylitEngine&)) {
    return [&loop = *ports_.mainLoop, engine = self_.make(), action] {
      loop.async([engine, action] {
        if (engine) action(*engine);
      });
    };
  };
  ports_.sleepNotifications->observe(hop([](StaylitEngine& engine) { engine.sleep_.release(); }),
                                     hop([](StaylitEngine& engine) {
                                       engine.monitor_.reset();
                                       engine.quietSince_.reset();
                                     }));
}

void StaylitEngine::passBlocked(const tidewell::PowerPolicy& policy) {
  sleep_.release();
  quietSince_.reset();
  const tidewell::PowerState& power = powerState_.get();
  status_.set(EngineStatus::blocked(power.blockedReason(policy).value_or(""),
                                    power.blockedReason(policy, Words::shown()).value_or("")));
}

void StaylitEngine::passQuiet() {
  const Moment start = quietSince_ ? *quietSince_ : ports_.clock->now();
  quietSince_ = start;
  quietJudgedAt_ = ports_.clock->now();
  const double remaining =
      static_cast<double>(graceSeconds()) - Seconds(quietJudgedAt_ - start).count();
  if (remaining > 0) {
    sleep_.hold("waiting for work to resume", keepScreenOn());
    status_.set(EngineStatus::winding(static_cast<std::int64_t>(std::ceil(remaining))));
  } else {
    sleep_.release();
    status_.set(EngineStatus::idle());
  }
}

void StaylitEngine::passWorking() {
  quietSince_.reset();
  std::vector<std::string> names;
  for (const tidewell::BusyApp& app : busyApps_.get())
    names.push_back(app.display);
  const std::vector<std::string>& asserting = assertingApps_.get();
  names.insert(names.end(), asserting.begin(), asserting.end());
  sleep_.hold(holdReason(names), keepScreenOn());
  status_.set(EngineStatus::holding(std::move(names)));
}

std::string StaylitEngine::holdReason(const std::vector<std::string>& names) {
  if (names.empty()) return "work in progress";
  if (names.size() == 1) return names.front() + " is working";
  return names.front() + " and " + std::to_string(names.size() - 1) + " more are working";
}

}  // namespace staylit
