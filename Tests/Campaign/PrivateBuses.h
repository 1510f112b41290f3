#pragma once

#include <chrono>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Tests/Platform/Support/PrivateBus.h"
#include "Tests/Platform/Support/ScopedEnvironment.h"

namespace staylit::campaign {

/// Two private buses, to which the environment points, and connections to them that try again at
/// once after a failure.
struct PrivateBuses {
  platform::testing::PrivateBus systemDaemon;
  platform::testing::PrivateBus sessionDaemon;
  platform::testing::ScopedEnvironment system{"DBUS_SYSTEM_BUS_ADDRESS", systemDaemon.address()};
  platform::testing::ScopedEnvironment session{"DBUS_SESSION_BUS_ADDRESS", sessionDaemon.address()};
  platform::EventLoop loop;
  platform::Bus systemBus{loop, platform::Bus::Kind::system, withoutPauses()};
  platform::Bus sessionBus{loop, platform::Bus::Kind::session, withoutPauses()};

 private:
  static platform::BusTiming withoutPauses() {
    platform::BusTiming timing;
    timing.firstPause = timing.longestPause = std::chrono::milliseconds(0);
    return timing;
  }
};

}  // namespace staylit::campaign
