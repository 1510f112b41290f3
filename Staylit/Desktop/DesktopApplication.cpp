#include "Staylit/Desktop/DesktopApplication.h"

#include <optional>
#include <utility>

#include "Staylit/Desktop/Session/LoginSession.h"
#include "Staylit/Desktop/Session/SessionClient.h"

namespace staylit {

DesktopApplication::DesktopApplication(platform::EventLoop& loop, platform::Bus& sessionBus,
                                       DesktopUserInterface& userInterface,
                                       ApplicationService::Request request)
    : loop_(loop),
      sessionBus_(sessionBus),
      userInterface_(userInterface),
      request_(std::move(request)) {}

void DesktopApplication::run(ApplicationDelegate& delegate) {
  const auto end = [this] { loop_.stop(); };
  // The signals are blocked before any other thread exists, so that only the loop gets them.
  loop_.watchTerminationSignals(end);
  ApplicationService service(loop_, sessionBus_,
                             [this](MenuItem::Action action) { userInterface_.choose(action); });
  const auto action = ApplicationService::action(request_.action);
  if (service.claim(request_, end) == ApplicationService::Claim::second) return;
  // No other program runs in the session, so there is nothing to end but this start.
  if (action == MenuItem::Action::terminate) return;

  std::optional<LoginSession> session;
  std::optional<SessionClient> client;
  // With lingering, the user's service manager goes on after a session, and so does its unit.
  if (!LoginSession::outlivesSessions()) {
    if (const auto id = LoginSession::ownGraphical()) session.emplace(loop_, *id, end);
    client.emplace(sessionBus_, end);
  }
  delegate.applicationDidFinishLaunching();
  if (action) {
    loop_.async([this, action] { userInterface_.choose(*action); });
  }
  runLoop();
  delegate.applicationWillTerminate();
}

void DesktopApplication::runLoop() {
  loop_.run();
  // The first window makes the loop return. From then on the window kit drives the loop.
  WindowKit* kit = userInterface_.windowKit();
  if (kit && !loop_.isStopping()) kit->run();
}

}  // namespace staylit
