#pragma once

#include <array>
#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Platform/Linux/Loop/EventSource.h"
#include "Staylit/StatusPrinter.h"

namespace staylit {

/// Asks the Staylit that runs for its status: that of the session, else the one that serves the
/// whole machine and has its name on the system bus; or only the latter. Starts none.
///
/// It believes whoever owns the name. On a session bus that is a program of the same user; on the
/// system bus the machine's policy says who may own it. Main thread only; all arguments must
/// outlive it.
class StatusQuery {
 public:
  StatusQuery(platform::EventLoop& loop, platform::Buses& buses, StatusPrinter& printer,
              const StatusRequest& request);
  StatusQuery(const StatusQuery&) = delete;
  StatusQuery& operator=(const StatusQuery&) = delete;

  /// Prints what it finds out, once, or until a signal ends it or nobody reads any more. Returns
  /// the status with which to end.
  int run();

 private:
  /// A bus, and whether one that can be asked is there.
  struct Place {
    platform::Bus* bus;
    bool isKnown = false;
    bool isOwned = false;
    platform::BusListening name;
    platform::BusListening changes;
    platform::BusSlot question;
  };

  void watch(Place& place);
  void decide();
  bool tellsOfOneOutOfReach();
  void ask(Place& place);
  void answered(const Place& place, const platform::BusReply& reply);
  [[nodiscard]] bool isMachine(const Place& place) const { return &place == &places_[1]; }
  /// Ends unless changes are to be followed and can be.
  void told();
  void endWithTheReader();
  static int readerGone(sd_event_source* source, int descriptor, unsigned events, void* data);

  platform::EventLoop& loop_;
  StatusPrinter& printer_;
  StatusRequest request_;
  std::array<Place, 2> places_;  ///< The session's comes first.
  bool hadBus_ = false;          ///< One that is there no more may come back.
  platform::EventSource output_;
};

}  // namespace staylit
