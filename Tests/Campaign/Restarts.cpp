#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "Tests/Campaign/Campaigns.h"
#include "Tests/EndToEnd/OwnMachine.h"
#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/FakePropertyService.h"
#include "Tests/Platform/Support/FakeSessionService.h"

namespace staylit::campaign {
namespace {

using namespace std::chrono_literals;
using platform::testing::BusService;
using platform::testing::FakePropertyService;
using platform::testing::FakeSessionService;
using testing::ChildProgram;
using testing::OwnMachine;
using Steady = std::chrono::steady_clock;

constexpr auto kHeldAgainLimit = 10s;
constexpr const char* kWatcherName = "org.kde.StatusNotifierWatcher";

/// A service that the campaign can end and start.
struct Restartable {
  std::string name;
  std::function<void()> stop;
  std::function<void()> start;
};

/// Restarts one of the services that the program talks to, while the real program holds with logind
/// and with a session manager or a power service.
class Restarts {
 public:
  explicit Restarts(Effort effort) : effort_(effort) {}

  bool begin() { return machine_.begin(); }

  Outcome run(std::string_view name) {
    // The program holds during the grace period after its start.
    machine_.writeSettings("graceSeconds = 600\ncpuThresholdPercent = 1e9\n");
    for (const Restartable& part : parts()) {
      if (part.name == name) restartAgainAndAgain(part);
    }
    outcome_.measured = "longest until the hold was there once and everywhere " +
                        std::to_string(longest_.count()) + " ms";
    return outcome_;
  }

 private:
  std::vector<Restartable> parts() {
    const auto stopLogind = [this] { machine_.logind->stop(); };
    const auto startLogind = [this] { machine_.logind->start(); };
    return {
        {"logind", stopLogind, startLogind},
        {"logind without a memory",
         [=, this] {
           stopLogind();
           machine_.logind->forget();
         },
         startLogind},
        {"the system bus",
         [=, this] {
           upower_.reset();
           stopLogind();
           machine_.systemDaemon->stop();
         },
         [=, this] {
           machine_.systemDaemon->start();
           startLogind();
           startUPower();
         }},
        {"the session bus",
         [this] {
           endSessionServices();
           machine_.sessionDaemon->stop();
         },
         [this] {
           machine_.sessionDaemon->start();
           startSessionServices();
         }},
        {"the session manager", [this] { manager_.reset(); }, [this] { startManager(); }},
        {"the power service", [this] { power_.reset(); }, [this] { startPower(); }},
        {"UPower", [this] { upower_.reset(); }, [this] { startUPower(); }},
        {"the watcher", [this] { watcher_.reset(); }, [this] { startWatcher(); }},
    };
  }

  void restartAgainAndAgain(const Restartable& part) {
    hasManager_ = part.name != "the power service";
    startUPower();
    // That hold lasts for ten minutes only, so the program is started several times.
    const int starts = effort_.quick ? 1 : 5;
    for (int start = 0; start < starts; ++start) {
      // The session's services are restarted because they keep the cookies of a program that was
      // killed.
      endSessionServices();
      startSessionServices();
      waitForNoHold(part.name);
      const ChildProgram staylit = machine_.start();
      waitForTheHold(part.name + ": before the first restart", 20s);
      for (int number = 0; number < (effort_.quick ? 1 : 20); ++number)
        restart(part);
      if (!effort_.quick && start == 0) expectNoSecondHold(part.name);
    }
    endSessionServices();
    upower_.reset();
  }

  void restart(const Restartable& part) {
    ++outcome_.runs;
    // This may be any phase of a tick.
    std::this_thread::sleep_for(randomTime(effort_.quick ? 300 : 2000));
    part.stop();
    std::this_thread::sleep_for(randomTime(300));
    const int registrations = registrations_;
    part.start();
    const auto begin = Steady::now();
    const auto heldAgain = waitForTheHold(part.name, kHeldAgainLimit);
    if (!heldAgain) return;
    longest_ = std::max(longest_,
                        std::chrono::duration_cast<std::chrono::milliseconds>(*heldAgain - begin));
    // After these two restarts the watcher knows no item.
    if (part.name == "the watcher" || part.name == "the session bus") {
      expectRegistration(part.name, registrations);
    }
  }

  /// Waits until nobody lists a hold of the program before, which was killed.
  void waitForNoHold(const std::string& what) {
    const auto isNone = [this] { return holds() == "0 locks and 0 cookies"; };
    if (!OwnMachine::eventually(isNone, 20s)) {
      outcome_.findings.push_back(what + ": 20 s after a kill there are " + holds());
    }
  }

  /// Waits until each list has had exactly one hold for a while, in which the program may still
  /// replace holds that a service remembers. Returns since when; absent when that does not happen.
  /// The program takes a new hold before it releases the old one, so two holds are right for a
  /// moment.
  std::optional<Steady::time_point> waitForTheHold(const std::string& what,
                                                   std::chrono::seconds limit) {
    const auto end = Steady::now() + limit;
    std::optional<Steady::time_point> since;
    bool wasHeld = false;
    for (std::string state = holds();; state = holds()) {
      const auto now = Steady::now();
      if (state != kOnce) since.reset();
      if (state == kOnce && !since) since = now;
      if (since && now - *since >= settled()) return since;
      if (wasHeld && (state.starts_with("0 ") || state.ends_with(" 0 cookies"))) {
        outcome_.findings.push_back(what + ": held again, and then there were " + state);
        return std::nullopt;
      }
      if (!since && now > end) {
        outcome_.findings.push_back(what + ": after " + std::to_string(limit.count()) +
                                    " s there are " + state);
        return std::nullopt;
      }
      wasHeld = wasHeld || state == kOnce;
      std::this_thread::sleep_for(20ms);
    }
  }
  [[nodiscard]] std::chrono::milliseconds settled() const { return effort_.quick ? 500ms : 2500ms; }

  void expectRegistration(const std::string& what, int before) {
    const auto isRegistered = [this, before] { return registrations_ > before; };
    if (OwnMachine::eventually(isRegistered, kHeldAgainLimit)) return;
    outcome_.findings.push_back(what + ": the status item was not registered again");
  }

  /// Watches for a little more than a minute, because the program reads the lists back once a
  /// minute and takes again what is missing there.
  void expectNoSecondHold(const std::string& what) {
    const auto end = Steady::now() + 70s;
    while (Steady::now() < end) {
      if (const std::string state = holds(); state != kOnce) {
        outcome_.findings.push_back(what + ": with nothing restarted there are " + state);
        return;
      }
      std::this_thread::sleep_for(500ms);
    }
  }

  /// How many holds logind lists, and how many the session's service.
  std::string holds() {
    const auto listed = machine_.inhibitors();
    if (!listed) return "no answers of logind";
    const auto locks = std::ranges::count_if(*listed, [](const std::string& lock) {
      return lock.starts_with("idle|Staylit|") && lock.ends_with("|block");
    });
    FakeSessionService* session = hasManager_ ? manager_.get() : power_.get();
    return std::to_string(locks) + " locks and " +
           std::to_string(session ? session->held().size() : 0) + " cookies";
  }
  static constexpr const char* kOnce = "1 locks and 1 cookies";

  std::chrono::milliseconds randomTime(int longest) {
    return std::chrono::milliseconds(std::uniform_int_distribution(0, longest)(random_));
  }

  void startSessionServices() {
    if (hasManager_) startManager();
    startPower();
    startWatcher();
  }
  void endSessionServices() {
    manager_.reset();
    power_.reset();
    watcher_.reset();
  }
  void startManager() {
    manager_ = std::make_unique<FakeSessionService>(machine_.sessionDaemon->address(),
                                                    "org.gnome.SessionManager");
  }
  void startPower() {
    power_ = std::make_unique<FakeSessionService>(machine_.sessionDaemon->address(),
                                                  "org.freedesktop.PowerManagement");
  }
  void startWatcher() {
    watcher_ = std::make_unique<BusService>(
        machine_.sessionDaemon->address(), std::vector<std::string>{kWatcherName},
        [this](sd_bus_message* call) {
          if (sd_bus_message_is_method_call(call, kWatcherName, "RegisterStatusNotifierItem") > 0) {
            ++registrations_;
          }
          sd_bus_reply_method_return(call, "");
        });
  }
  void startUPower() {
    upower_ = std::make_unique<FakePropertyService>(machine_.systemDaemon->address(),
                                                    "org.freedesktop.UPower");
    upower_->set("/org/freedesktop/UPower", "org.freedesktop.UPower", {{"OnBattery", false}});
  }

  Effort effort_;
  OwnMachine machine_;
  Outcome outcome_;
  std::mt19937 random_{1};
  std::chrono::milliseconds longest_{0};
  std::atomic<int> registrations_ = 0;
  /// Whether there is a session manager. The program then does not ask the power service.
  bool hasManager_ = true;
  std::unique_ptr<FakeSessionService> manager_;
  std::unique_ptr<FakeSessionService> power_;
  std::unique_ptr<FakePropertyService> upower_;
  std::unique_ptr<BusService> watcher_;
};

}  // namespace

Outcome restarts(Effort effort, std::string_view name) {
  if (const auto obstacle = OwnMachine::obstacle()) return notPossible(*obstacle);
  Restarts campaign(effort);
  if (!campaign.begin()) return notPossible("logind does not answer");
  return campaign.run(name);
}

}  // namespace staylit::campaign
