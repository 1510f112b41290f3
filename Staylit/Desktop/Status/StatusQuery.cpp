#include "Staylit/Desktop/Status/StatusQuery.h"

#include <unistd.h>

#include "Staylit/Desktop/Session/ApplicationService.h"
#include "Staylit/Desktop/Session/UserLock.h"
#include "Staylit/Desktop/Status/StatusMessages.h"

namespace staylit {
namespace {

using platform::BusReply;

constexpr const char* kName = ApplicationService::kName;
constexpr platform::BusMethod kGetAll{kName, StatusInterface::kPath,
                                      "org.freedesktop.DBus.Properties", "GetAll"};
/// One that is just starting may take a moment.
constexpr tidewell::Seconds kLongestWait{10};
constexpr const char* kSilent = "the Staylit that runs does not answer";

bool isGone(const BusReply& reply) {
  return reply.errorName == SD_BUS_ERROR_NAME_HAS_NO_OWNER ||
         reply.errorName == SD_BUS_ERROR_SERVICE_UNKNOWN;
}

std::string whyNot(const BusReply& reply) {
  if (reply.errorName == SD_BUS_ERROR_NO_REPLY) return kSilent;
  if (reply.errorName == SD_BUS_ERROR_ACCESS_DENIED) {
    return "the Staylit that runs is another user's";
  }
  if (reply.errorName.starts_with("org.freedesktop.DBus.Error.Unknown")) {
    return "the Staylit that runs is of an older version, which does not tell its status";
  }
  return "the Staylit that runs answered what cannot be read";
}

}  // namespace

StatusQuery::StatusQuery(platform::EventLoop& loop, platform::Buses& buses, StatusPrinter& printer,
                         const StatusRequest& request)
    : loop_(loop), printer_(printer), request_(request) {
  places_[0].bus = &buses.session;
  places_[1].bus = &buses.system;
}

int StatusQuery::run() {
  loop_.watchTerminationSignals([this] { loop_.stop(); });
  endWithTheReader();
  for (Place& place : places_) {
    place.isKnown = request_.ofMachine && !isMachine(place);
    if (!place.isKnown) watch(place);
  }
  loop_.async([this] { decide(); });
  const auto limit = loop_.scheduleRepeating(kLongestWait, [this] {
    if (request_.follows) return;
    const bool isAsked = places_[0].question || places_[1].question;
    printer_.failed(isAsked ? kSilent : "the bus does not answer");
    loop_.stop();
  });
  loop_.run();
  return printer_.exitStatus();
}

void StatusQuery::watch(Place& place) {
  place.isKnown = place.bus->connect() < 0;
  hadBus_ = hadBus_ || !place.isKnown;
  place.name = place.bus->watchName(kName, [this, &place](bool owned) {
    place.isKnown = true;
    place.isOwned = owned;
    place.question.reset();
    decide();
  });
  if (!request_.follows) return;
  place.changes = place.bus->subscribe(
      {kName, StatusInterface::kPath, StatusInterface::kName, StatusInterface::kChanged},
      [this](sd_bus_message*) { decide(); });
}

void StatusQuery::decide() {
  for (Place& place : places_) {
    if (!place.isKnown) return;
    if (place.isOwned) return ask(place);
  }
  if (tellsOfOneOutOfReach()) return told();
  const bool ofMachine = request_.ofMachine;
  if (places_[ofMachine ? 1 : 0].bus->handle() == nullptr) {
    printer_.failed(std::string("there is no ") + (ofMachine ? "system" : "session") +
                    " bus here on which one could be asked");
    if (!hadBus_) loop_.stop();
  } else {
    printer_.foundNone();
  }
  told();
}

/// Not while changes are followed: one that ends leaves the bus before it gives its lock back.
bool StatusQuery::tellsOfOneOutOfReach() {
  if (request_.follows || request_.ofMachine) return false;
  const auto holder = UserLock().holder();
  if (!holder) return false;
  printer_.failed(outOfReach(*holder, places_[0].bus->handle() != nullptr));
  return true;
}

void StatusQuery::ask(Place& place) {
  place.question = place.bus->callAsync(
      kGetAll,
      [](sd_bus_message* call) { return sd_bus_message_append(call, "s", StatusInterface::kName); },
      [this, &place](const BusReply& reply) { answered(place, reply); });
}

void StatusQuery::answered(const Place& place, const BusReply& reply) {
  // The bus tells as well that the name has lost its owner.
  if (isGone(reply)) return;
  StatusReport report;
  if (reply && readStatus(reply.message.get(), report)) {
    report.servesMachine = isMachine(place);
    printer_.answered(report);
  } else {
    printer_.failed(whyNot(reply));
  }
  told();
}

void StatusQuery::told() {
  if (!request_.follows || printer_.isLost()) loop_.stop();
}

void StatusQuery::endWithTheReader() {
  sd_event_source* source = nullptr;
  // A pipe without a reader is an error that is always told. There is nothing to watch on a file.
  if (sd_event_add_io(loop_.handle(), &source, STDOUT_FILENO, 0, readerGone, this) >= 0) {
    output_ = platform::EventSource(source);
  }
}

int StatusQuery::readerGone(sd_event_source* /*source*/, int /*descriptor*/, unsigned /*events*/,
                            void* data) {
  auto& self = *static_cast<StatusQuery*>(data);
  self.output_.reset();
  self.loop_.stop();
  return 0;
}

}  // namespace staylit
