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
  // Before any other thread exists, so that the signals come to the loop alone.
  loop_.watchTerminationSignals(end);
  ApplicationService service(loop_, sessionBus_,
                             [this](MenuItem::Action action) { userInterface_.choose(action); });
  const auto action = ApplicationService::action(request_.action);
  if (service.claim(request_, end) == ApplicationService::Claim::second) return;
  // There is nothing to end but this start.
  if (action == MenuItem::Action::terminate) return;

  std::optional<LoginSession> session;
  std::optional<SessionClient> client;
  // With lingering, the user's manager goes on after a session, and so does its unit.
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
  // The first window makes the loop return, for the window kit to drive it from then on.
  WindowKit* kit = userInterface_.windowKit();
  if (kit && !loop_.isStopping()) kit->run();
}

}  // namespace staylit
