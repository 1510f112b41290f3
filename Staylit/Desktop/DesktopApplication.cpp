#include "Staylit/Desktop/DesktopApplication.h"

#include <chrono>
#include <optional>
#include <utility>

#include "Staylit/Desktop/Session/DesktopNotification.h"
#include "Staylit/Desktop/Session/LoginSession.h"
#include "Staylit/Desktop/Session/SessionClient.h"
#include "Tidewell/Log.h"
#include "Tidewell/Words.h"

namespace staylit {
namespace {

using Claim = ApplicationService::Claim;
using tidewell::Words;

/// One that ends may still write its settings, which takes five seconds at most.
constexpr int kMostTries = 60;
constexpr tidewell::Seconds kBetweenTries{0.1};

/// One that runs has the lock, and cannot be asked for anything.
std::string outOfReach(std::optional<pid_t> holder, const Words& words) {
  if (holder.value_or(0) <= 0) {
    // TRANSLATORS: no full stop. The session bus is what the programs of a desktop talk by.
    return words.phrase("Staylit runs already, out of reach of this session bus");
  }
  return words.phrase("Staylit runs already as process {process}, out of reach of this session bus",
                      {{"process", std::to_string(*holder)}});
}

}  // namespace

DesktopApplication::DesktopApplication(platform::EventLoop& loop, platform::Bus& sessionBus,
                                       DesktopUserInterface& userInterface,
                                       tidewell::Console& console,
                                       ApplicationService::Request request)
    : loop_(loop),
      sessionBus_(sessionBus),
      userInterface_(userInterface),
      console_(console),
      request_(std::move(request)) {}

void DesktopApplication::run(ApplicationDelegate& delegate) {
  const auto end = [this] { loop_.stop(); };
  // The signals are blocked before any other thread exists, so that only the loop gets them.
  loop_.watchTerminationSignals(end);
  ApplicationService service(loop_, sessionBus_,
                             [this](MenuItem::Action action) { return perform(action); });
  if (!isTheOne(service)) return;
  if (!request_.action.empty()) {
    // Whoever wants a window wants no program that runs without one.
    const std::string obstacle = userInterface_.obstacleToWindows();
    if (!obstacle.empty()) return fail(obstacle);
    if (console_.outputIsTerminal()) {
      console_.printLine("Staylit did not run, so it starts here; Ctrl-C ends it");
    }
  }

  std::optional<LoginSession> session;
  std::optional<SessionClient> client;
  // With lingering, the user's service manager goes on after a session, and so does its unit.
  if (!LoginSession::outlivesSessions()) {
    if (const auto id = LoginSession::ownGraphical()) session.emplace(loop_, *id, end);
    client.emplace(sessionBus_, end);
  }
  delegate.applicationDidFinishLaunching();
  if (const auto action = ApplicationService::action(request_.action)) {
    loop_.async([this, action] { userInterface_.choose(*action); });
  }
  runLoop();
  delegate.applicationWillTerminate();
}

bool DesktopApplication::isTheOne(ApplicationService& service) {
  const Claim claim = service.claim(request_, [this] { loop_.stop(); });
  if (claim == Claim::second) {
    tellAsSecond(service.refusal());
    return false;
  }
  // One that hangs keeps its lock, and must not keep the work of this one from counting.
  return claim == Claim::beside || takeLock();
}

void DesktopApplication::tellAsSecond(const std::string& refusal) {
  if (!refusal.empty()) return fail(refusal);
  std::string text = "Staylit runs already";
  if (request_.action == "settings") text += "; it was asked to show its settings";
  if (request_.action != "settings" && !request_.isBackground) {
    text += "; it was asked to show Choose Apps";
  }
  console_.printLine(text);
}

bool DesktopApplication::takeLock() {
  UserLock::Outcome outcome = lock_.take();
  const auto nextTry = loop_.scheduleRepeating(kBetweenTries, [this] { loop_.handOver(); });
  for (int tries = 0; outcome == UserLock::Outcome::held && tries < kMostTries; ++tries) {
    loop_.run();
    if (loop_.isStopping()) return false;
    outcome = lock_.take();
  }
  if (outcome == UserLock::Outcome::noFolder) {
    tidewell::Log::error(
        "there is no runtime folder of this user alone, so a second Staylit on another session bus "
        "would run beside this one");
  }
  if (outcome == UserLock::Outcome::held) tellThatOneRuns(lock_.holder());
  return outcome != UserLock::Outcome::held;
}

void DesktopApplication::tellThatOneRuns(std::optional<pid_t> holder) {
  const std::string text = outOfReach(holder, Words::source());
  if (request_.isBackground) return console_.printLine(text);
  const Words& words = Words::shown();
  // TRANSLATORS: the full stop of your language, after a sentence that is also used without one.
  const std::string body = words.phrase("{sentence}.", {{"sentence", outOfReach(holder, words)}});
  // TRANSLATORS: the title of a notification.
  showNotification(sessionBus_, {words.phrase("Staylit runs already"), body});
  fail(text);
}

std::string DesktopApplication::perform(MenuItem::Action action) {
  const bool opens =
      action == MenuItem::Action::openApps || action == MenuItem::Action::openSettings;
  std::string obstacle = opens ? userInterface_.obstacleToWindows() : "";
  // The user interface tells of the obstacle as well, because a click has no terminal.
  userInterface_.choose(action);
  return obstacle;
}

void DesktopApplication::runLoop() {
  loop_.run();
  // The first window makes the loop return. From then on the window kit drives the loop.
  WindowKit* kit = userInterface_.windowKit();
  if (kit && !loop_.isStopping()) kit->run();
}

void DesktopApplication::fail(const std::string& why) {
  console_.writeError("staylit: " + why + "\n");
  exitStatus_ = 1;
}

}  // namespace staylit
