#include "Platform/Linux/Bus/ConnectionWatch.h"

#include <memory>
#include <utility>

namespace platform {

ConnectionWatch::ConnectionWatch(tidewell::MainLoop& loop, Callback callback)
    : loop_(loop), callback_(std::move(callback)) {}

void ConnectionWatch::connected(sd_bus* /*bus*/) {
  tell(true);
}

void ConnectionWatch::disconnected() {
  tell(false);
}

void ConnectionWatch::tell(bool connected) {
  loop_.async([weak = weak_from_this(), this, connected] {
    if (const BusListening keep = weak.lock()) callback_(connected);
  });
}

}  // namespace platform
