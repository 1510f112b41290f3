#include "Staylit/Desktop/Control/RunningStaylit.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <functional>
#include <utility>

#include "Staylit/Desktop/Control/ControlObject.h"
#include "Staylit/Desktop/Session/ApplicationService.h"
#include "Staylit/Desktop/Session/DesktopNotification.h"
#include "Staylit/PauseTexts.h"
#include "Tidewell/Words.h"

namespace staylit {
namespace {

using platform::BusReply;
using Command = ControlRequest::Kind;

/// One that is just starting, or writes its settings while it ends, may take a moment.
constexpr tidewell::Seconds kLongestAnswer{10};
constexpr tidewell::Seconds kBetweenAnswers{0.05};

const char* methodOf(Command kind) {
  switch (kind) {
    case Command::pause:
      return "Pause";
    case Command::resume:
      return "Resume";
    case Command::togglePause:
      return "TogglePause";
    case Command::quit:
      break;
  }
  return "ActivateAction";
}

platform::BusMethod methodFor(Command kind) {
  const bool isAction = kind == Command::quit;
  return {ApplicationService::kName, isAction ? ApplicationService::kPath : ControlInterface::kPath,
          isAction ? ApplicationService::kInterface : ControlInterface::kName, methodOf(kind)};
}

int appendArguments(sd_bus_message* call, const ControlRequest& request) {
  if (request.kind == Command::quit) return sd_bus_message_append(call, "sava{sv}", "quit", 0, 0);
  if (request.kind != Command::pause) return 0;
  const double seconds = request.length.value_or(tidewell::Seconds(0)).count();
  return sd_bus_message_append(call, "x", static_cast<std::int64_t>(seconds));
}

bool isFlagSet(sd_bus_message* reply) {
  int flag = 0;
  return sd_bus_message_read(reply, "b", &flag) >= 0 && flag != 0;
}

std::string describePauseIn(sd_bus_message* reply, tidewell::WallTime now) {
  std::int64_t seconds = 0;
  if (sd_bus_message_read(reply, "x", &seconds) < 0 || seconds <= 0) return "Paused";
  // A message may hold any number, and local time only so many years.
  constexpr std::int64_t kLatest = 9'200'000'000;
  return describePause(tidewell::WallTime(std::chrono::seconds(std::min(seconds, kLatest))), now);
}

std::string whyItWasNotDone(const BusReply& reply) {
  if (reply.errorName == SD_BUS_ERROR_NO_REPLY || reply.error == -ETIMEDOUT) {
    return "the Staylit that runs does not answer";
  }
  if (reply.errorName.starts_with("org.freedesktop.DBus.Error.Unknown")) {
    return "the Staylit that runs is of another version, which does not know this command";
  }
  return "the Staylit that runs refused: " + reply.errorName;
}

}  // namespace

RunningStaylit::RunningStaylit(platform::EventLoop& loop, platform::Bus& sessionBus,
                               tidewell::Console& console, tidewell::Clock& clock)
    : loop_(loop), bus_(sessionBus), console_(console), clock_(clock) {}

int RunningStaylit::obey(const ControlRequest& request) {
  using State = platform::NameStatus::State;
  const int connected = bus_.connect();
  if (connected < 0) return foundNone(request);
  const platform::NameStatus status = bus_.nameStatus(ApplicationService::kName);
  if (status.state == State::unknown) return fail("the session bus does not answer");
  if (status.state == State::free) return foundNone(request);
  return request.kind == Command::quit ? quit() : tell(request, ask(request));
}

int RunningStaylit::foundNone(const ControlRequest& request) {
  const bool hasBus = bus_.handle() != nullptr;
  if (const auto holder = lock_.holder()) {
    return fail(outOfReach(*holder, hasBus));
  }
  if (!hasBus && !lock_.hasFolder()) {
    return fail("there is no session bus here on which one could be asked");
  }
  console_.writeError("staylit: Staylit does not run\n");
  // The menu of a launcher and a key of one's own have no terminal.
  if (request.kind == Command::togglePause && !console_.errorIsTerminal()) {
    showNotification(bus_,
                     {tidewell::Words::shown().phrase("Staylit does not run"),
                      tidewell::Words::shown().phrase("There is nothing to pause or resume.")});
  }
  return noneRuns;
}

BusReply RunningStaylit::ask(const ControlRequest& request) {
  BusReply answer{-ETIMEDOUT, SD_BUS_ERROR_NO_REPLY, {}};
  const auto question = bus_.callAsync(
      methodFor(request.kind),
      [&request](sd_bus_message* call) { return appendArguments(call, request); },
      [&](BusReply reply) {
        answer = std::move(reply);
        loop_.handOver();
      });
  const auto limit = loop_.scheduleRepeating(kLongestAnswer, [this] { loop_.handOver(); });
  if (question) loop_.run();
  return answer;
}

int RunningStaylit::tell(const ControlRequest& request, const BusReply& reply) {
  if (!reply) return fail(whyItWasNotDone(reply));
  return say(whatWasDone(request, reply.message.get()));
}

std::string RunningStaylit::whatWasDone(const ControlRequest& request, sd_bus_message* reply) {
  switch (request.kind) {
    case Command::pause:
      return describePauseIn(reply, clock_.wallTime());
    case Command::resume:
      return isFlagSet(reply) ? "Resumed" : "It was not paused";
    case Command::togglePause:
      return isFlagSet(reply) ? "Paused" : "Resumed";
    case Command::quit:
      break;
  }
  return "Staylit has ended";
}

int RunningStaylit::quit() {
  bool isGone = false;
  const auto name = bus_.watchName(ApplicationService::kName, [&isGone](bool owned) {
    if (!owned) isGone = true;
  });
  const BusReply reply = ask({Command::quit, {}});
  // One that ends may not live to answer.
  const bool isRefused = !reply && reply.errorName != SD_BUS_ERROR_NO_REPLY;
  if (isRefused && !isGone) return fail(whyItWasNotDone(reply));
  const auto end =
      clock_.now() + std::chrono::duration_cast<std::chrono::nanoseconds>(kLongestAnswer);
  // It may still write its settings after it has left the bus.
  const auto hasEnded = [&] { return isGone && !lock_.holder(); };
  const auto look = loop_.scheduleRepeating(kBetweenAnswers, [this] { loop_.handOver(); });
  while (!hasEnded() && clock_.now() < end && !loop_.isStopping())
    loop_.run();
  return hasEnded() ? say("Staylit has ended") : fail("the Staylit that runs does not end");
}

int RunningStaylit::say(const std::string& text) {
  console_.printLine(text);
  return done;
}

int RunningStaylit::fail(const std::string& why) {
  console_.writeError("staylit: " + why + "\n");
  return trouble;
}

}  // namespace staylit
