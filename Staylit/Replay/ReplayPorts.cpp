#include "Staylit/Replay/ReplayPorts.h"

#include <utility>

#include "Staylit/Replay/AccountedHolds.h"
#include "Staylit/Replay/SilentLog.h"
#include "Tidewell/ProcessSampler.h"
#include "Tidewell/PropertyConversion.h"

namespace staylit {
namespace {

/// The processes that ask to stay awake have numbers that no application of a tape has.
constexpr std::int32_t kFirstAsking = 1 << 30;

std::int32_t processAt(std::size_t place) {
  return static_cast<std::int32_t>(place) + 1;
}

std::size_t placeOf(std::int32_t process) {
  return static_cast<std::size_t>(process) - 1;
}

class TapedRunningApplication : public tidewell::RunningApplication {
 public:
  TapedRunningApplication(std::int32_t process, std::optional<std::string> identifier,
                          std::optional<std::string> name)
      : process_(process), identifier_(std::move(identifier)), name_(std::move(name)) {}

  [[nodiscard]] std::int32_t processIdentifier() const override { return process_; }
  [[nodiscard]] const std::optional<std::string>& bundleIdentifier() const override {
    return identifier_;
  }
  [[nodiscard]] const std::optional<std::string>& localizedName() const override { return name_; }

 private:
  std::int32_t process_;
  std::optional<std::string> identifier_;
  std::optional<std::string> name_;
};

/// A path from which the sampler makes the name `executable`; empty when there is none, and then
/// the name was made of the application's name.
std::string pathFor(const std::string& executable) {
  for (std::string path : {"/" + executable, executable}) {
    if (tidewell::ProcessSampler::nameFromPath(path) == executable) return path;
  }
  return {};
}

class SilentConsole : public tidewell::Console {
 public:
  void printLine(std::string_view /*line*/) override {}
  void writeError(std::string_view /*text*/) override {}
  bool outputIsTerminal() override { return false; }
  bool errorIsTerminal() override { return false; }
};

class NoLoginItem : public tidewell::LoginItem {
 public:
  Failure registerItem() override { return std::nullopt; }
  Failure unregisterItem() override { return std::nullopt; }
};

}  // namespace

class ReplayPorts::Clock : public tidewell::Clock {
 public:
  tidewell::Moment now() override {
    const tidewell::Moment now = moment_;
    if (next_) moment_ = *std::exchange(next_, std::nullopt);
    return now;
  }
  tidewell::WallTime wallTime() override { return wallTime_ + (moment_ - setAt_); }
  /// A tape does not tell why there were no ticks for long. It is taken for sleep.
  std::chrono::nanoseconds timeAsleep() override { return moment_.time_since_epoch(); }
  void sleepFor(tidewell::Seconds /*duration*/) override {}

  void set(tidewell::Moment moment, tidewell::WallTime wallTime) {
    set(moment, std::nullopt);
    setAt_ = moment;
    wallTime_ = wallTime;
  }
  void set(tidewell::Moment moment, std::optional<tidewell::Moment> next) {
    moment_ = moment;
    next_ = next;
  }

 private:
  tidewell::Moment moment_;
  std::optional<tidewell::Moment> next_;
  tidewell::Moment setAt_;  ///< When the wall clock showed `wallTime_`.
  tidewell::WallTime wallTime_{};
};

class ReplayPorts::Settings : public tidewell::Defaults {
 public:
  explicit Settings(tidewell::PropertyDictionary given) : given_(std::move(given)) {}

  void setTaped(const tidewell::PropertyDictionary& taped) {
    if (taped != taped_) taped_ = taped;
  }

  void registerDefaults(const tidewell::PropertyDictionary& defaults) override {
    for (const auto& [key, value] : defaults)
      registered_.insert_or_assign(key, value);
  }
  std::int64_t integer(std::string_view key) override { return tidewell::integerValue(value(key)); }
  double real(std::string_view key) override { return tidewell::realValue(value(key)); }
  bool boolean(std::string_view key) override { return tidewell::booleanValue(value(key)); }
  std::optional<std::vector<std::string>> stringList(std::string_view key) override {
    return tidewell::stringListValue(value(key));
  }
  // Nobody sets anything during a replay.
  void setInteger(std::string_view /*key*/, std::int64_t /*value*/) override {}
  void setReal(std::string_view /*key*/, double /*value*/) override {}
  void setBoolean(std::string_view /*key*/, bool /*value*/) override {}
  void setStringList(std::string_view /*key*/, const std::vector<std::string>& /*value*/) override {
  }
  void finishWriting() override {}

 private:
  [[nodiscard]] tidewell::PropertyValue value(std::string_view key) const {
    for (const tidewell::PropertyDictionary* all : {&given_, &taped_, &registered_}) {
      const auto found = all->find(key);
      if (found != all->end()) return found->second;
    }
    return {};
  }

  tidewell::PropertyDictionary given_;
  tidewell::PropertyDictionary taped_;
  tidewell::PropertyDictionary registered_;
};

class ReplayPorts::Loop : public tidewell::MainLoop {
 public:
  std::unique_ptr<tidewell::RepeatingTimer> scheduleRepeating(
      tidewell::Seconds /*interval*/, std::function<void()> action) override {
    auto shared = std::make_shared<Action>(std::move(action));
    timers_.push_back(shared);
    return std::make_unique<Timer>(std::move(shared));
  }
  void async(std::function<void()> work) override { posted_.push_back(std::move(work)); }

  void fireTimers() {
    std::erase_if(timers_, [](const auto& timer) { return timer.expired(); });
    const auto timers = timers_;
    for (const auto& weak : timers) {
      if (const auto action = weak.lock()) (*action)();
    }
  }
  void runPosted() {
    while (!posted_.empty()) {
      const auto work = std::move(posted_.front());
      posted_.pop_front();
      work();
    }
  }

 private:
  using Action = std::function<void()>;

  class Timer : public tidewell::RepeatingTimer {
   public:
    explicit Timer(std::shared_ptr<Action> action) : action_(std::move(action)) {}
    void setTolerance(tidewell::Seconds /*tolerance*/) override {}
    void invalidate() override { action_.reset(); }

   private:
    std::shared_ptr<Action> action_;
  };

  std::vector<std::weak_ptr<Action>> timers_;
  std::deque<std::function<void()>> posted_;
};

class ReplayPorts::Processes : public tidewell::ProcessTable {
 public:
  void setInputs(const TapedInputs& inputs, std::uint32_t version) {
    inputs_ = &inputs;
    if (std::exchange(version_, version) == version) return;
    paths_.clear();
    applications_.clear();
    for (const TapedApplication& application : inputs.applications) {
      paths_.push_back(pathFor(application.executable));
      applications_.push_back(std::make_shared<TapedRunningApplication>(
          processAt(applications_.size()), application.bundleID, application.display));
    }
  }

  tidewell::ProcessSnapshot snapshot() override {
    present_.clear();
    presentApplications_.clear();
    for (std::size_t place = 0; place < applications_.size(); ++place) {
      if (!inputs_->applications[place].isPresent) continue;
      present_.push_back(processAt(place));
      presentApplications_.push_back(applications_[place]);
    }
    return {present_, presentApplications_};
  }

  bool resourceUsage(std::int32_t pid, tidewell::ResourceUsage& usage) override {
    const TapedUsage& taped = inputs_->applications[placeOf(pid)].usage;
    usage = {};
    usage.userTime = taped.cpuNanos;
    usage.diskBytesRead = taped.diskBytes;
    usage.startTime = 1;
    usage.programVersion = version_;
    return true;
  }

  std::string_view path(std::int32_t pid) override { return paths_[placeOf(pid)]; }
  tidewell::Timebase timebase() override { return {1, 1}; }

 private:
  using Application = std::shared_ptr<const tidewell::RunningApplication>;

  const TapedInputs* inputs_ = nullptr;
  std::uint32_t version_ = 0;
  std::vector<std::string> paths_;         ///< By place.
  std::vector<Application> applications_;  ///< By place.
  std::vector<std::int32_t> present_;
  std::vector<Application> presentApplications_;
};

class ReplayPorts::Applications : public tidewell::RunningApplications {
 public:
  explicit Applications(std::shared_ptr<const Assertions> assertions)
      : assertions_(std::move(assertions)) {}
  std::shared_ptr<const tidewell::RunningApplication> withProcessIdentifier(
      std::int32_t pid) override;

 private:
  std::shared_ptr<const Assertions> assertions_;
};

class ReplayPorts::Queues : public tidewell::SerialQueues {
 public:
  std::unique_ptr<tidewell::SerialQueue> make(const std::string& /*label*/) override {
    return std::make_unique<Queue>();
  }

 private:
  class Queue : public tidewell::SerialQueue {
   public:
    void async(std::function<void()> work) override { work(); }
  };
};

class ReplayPorts::Meter : public tidewell::NetworkMeter {
 public:
  void setInputs(const TapedInputs& inputs) { inputs_ = &inputs; }

  tidewell::NetworkMeasurement measure(tidewell::Cancellation& /*cancellation*/) override {
    tidewell::NetworkTotals totals;
    for (std::size_t place = 0; inputs_ && place < inputs_->applications.size(); ++place) {
      const std::uint64_t bytes = inputs_->applications[place].usage.netBytes;
      if (bytes != 0) totals.emplace(processAt(place), bytes);
    }
    return {std::move(totals), ""};
  }

 private:
  const TapedInputs* inputs_ = nullptr;
};

class ReplayPorts::Power : public tidewell::PowerSources {
 public:
  void set(const tidewell::PowerState& state) { state_ = state; }
  bool isLowPowerModeEnabled() override { return state_.lowPowerMode; }
  std::optional<tidewell::PowerSource> source() override {
    if (!state_.hasBattery) return std::nullopt;
    return tidewell::PowerSource{state_.onAC, state_.percentage};
  }

 private:
  tidewell::PowerState state_{true, 100, false, false};
};

class ReplayPorts::Assertions : public tidewell::AssertionTable {
 public:
  void setInputs(const TapedInputs& inputs) {
    if (names_ != inputs.asserting) names_ = inputs.asserting;
  }

  std::optional<std::vector<tidewell::AssertionHolder>> assertionsByProcess() override {
    std::vector<tidewell::AssertionHolder> holders;
    for (std::size_t number = 0; number < names_.size(); ++number) {
      holders.push_back({kFirstAsking + static_cast<std::int32_t>(number),
                         {{"PreventUserIdleSystemSleep", 1, ""}}});
    }
    return holders;
  }
  std::int32_t ownProcessIdentifier() override { return 0; }

  [[nodiscard]] std::optional<std::string> nameOf(std::int32_t process) const {
    const auto number = static_cast<std::size_t>(process - kFirstAsking);
    return process >= kFirstAsking && number < names_.size() ? std::optional(names_[number])
                                                             : std::nullopt;
  }

 private:
  std::vector<std::string> names_;
};

std::shared_ptr<const tidewell::RunningApplication>
ReplayPorts::Applications::withProcessIdentifier(std::int32_t pid) {
  auto name = assertions_->nameOf(pid);
  if (!name) return nullptr;
  return std::make_shared<TapedRunningApplication>(pid, std::move(name), std::nullopt);
}

class ReplayPorts::SleepNotifications : public tidewell::SleepNotifications {
 public:
  void observe(std::function<void()> willSleep, std::function<void()> didWake) override {
    observers_.emplace_back(std::move(willSleep), std::move(didWake));
  }
  void sleep() {
    for (const auto& [willSleep, didWake] : observers_)
      willSleep();
  }
  void wake() {
    for (const auto& [willSleep, didWake] : observers_)
      didWake();
  }

 private:
  std::vector<std::pair<std::function<void()>, std::function<void()>>> observers_;
};

ReplayPorts::ReplayPorts(std::shared_ptr<tidewell::Text> text,
                         tidewell::PropertyDictionary settings)
    : clock_(std::make_shared<Clock>()),
      settings_(std::make_shared<Settings>(std::move(settings))),
      loop_(std::make_shared<Loop>()),
      processes_(std::make_shared<Processes>()),
      meter_(std::make_shared<Meter>()),
      power_(std::make_shared<Power>()),
      assertions_(std::make_shared<Assertions>()),
      sleepNotifications_(std::make_shared<SleepNotifications>()) {
  ports_.log = std::make_shared<SilentLog>();
  ports_.clock = clock_;
  ports_.console = std::make_shared<SilentConsole>();
  ports_.text = std::move(text);
  ports_.defaults = settings_;
  ports_.mainLoop = loop_;
  ports_.processTable = processes_;
  ports_.runningApplications = std::make_shared<Applications>(assertions_);
  ports_.serialQueues = std::make_shared<Queues>();
  ports_.networkMeter = meter_;
  ports_.powerSources = power_;
  ports_.powerManagement = std::make_shared<AccountedHolds>("replay");
  ports_.assertionTable = assertions_;
  ports_.sleepNotifications = sleepNotifications_;
  ports_.loginItem = std::make_shared<NoLoginItem>();
  installed_.emplace(ports_);
}

ReplayPorts::~ReplayPorts() = default;

void ReplayPorts::setTime(tidewell::Moment moment, tidewell::WallTime wallTime) {
  clock_->set(moment, wallTime);
}

void ReplayPorts::setTime(tidewell::Moment moment, std::optional<tidewell::Moment> next) {
  clock_->set(moment, next);
}

void ReplayPorts::setInputs(const TapedInputs& inputs, std::uint32_t version) {
  settings_->setTaped(inputs.settings);
  processes_->setInputs(inputs, version);
  meter_->setInputs(inputs);
  power_->set(inputs.power);
  assertions_->setInputs(inputs);
}

void ReplayPorts::fireTimers() {
  loop_->fireTimers();
  loop_->runPosted();
}

void ReplayPorts::sleep() {
  sleepNotifications_->sleep();
  loop_->runPosted();
}

void ReplayPorts::wake() {
  sleepNotifications_->wake();
  loop_->runPosted();
}

}  // namespace staylit
