#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Tests/Platform/Support/ChildProgram.h"
#include "Tests/Platform/Support/PrivateBus.h"
#include "Tests/Platform/Support/RunUntil.h"
#include "Tests/Platform/Support/ScopedEnvironment.h"

namespace platform::testing {

/// A loop and a private bus of each kind, at which the environment points.
class Buses {
 public:
  /// Call it before all else, where `dbus-daemon` is installed.
  void open() {
    systemDaemon.emplace(systemPolicy);
    sessionDaemon.emplace(sessionPolicy);
    systemAddress_.emplace("DBUS_SYSTEM_BUS_ADDRESS", systemDaemon->address());
    sessionAddress_.emplace("DBUS_SESSION_BUS_ADDRESS", sessionDaemon->address());
    loop = std::make_unique<EventLoop>();
    systemBus = std::make_unique<Bus>(*loop, Bus::Kind::system, impatient());
    sessionBus = std::make_unique<Bus>(*loop, Bus::Kind::session, impatient());
  }

  /// The call limit is that of the program, but the pauses are short.
  static BusTiming impatient() {
    BusTiming timing;
    timing.firstPause = std::chrono::milliseconds(20);
    timing.longestPause = std::chrono::milliseconds(100);
    return timing;
  }

  bool eventually(const std::function<bool()>& condition) { return runUntil(*loop, condition); }

  PrivateBus::Policy systemPolicy = PrivateBus::Policy::own;
  PrivateBus::Policy sessionPolicy = PrivateBus::Policy::own;
  std::optional<PrivateBus> systemDaemon;
  std::optional<PrivateBus> sessionDaemon;

 private:
  std::optional<ScopedEnvironment> systemAddress_;
  std::optional<ScopedEnvironment> sessionAddress_;

 public:
  std::unique_ptr<EventLoop> loop;
  std::unique_ptr<Bus> systemBus;
  std::unique_ptr<Bus> sessionBus;
};

/// A test with buses of its own. Skipped where there is no dbus-daemon.
class BusTest : public ::testing::Test, protected Buses {
 protected:
  void SetUp() override {
    if (!isInstalled("dbus-daemon")) GTEST_SKIP() << "dbus-daemon is not installed";
    open();
  }
};

/// Buses for a machine that a contract's suite asks.
class BusMachine : protected Buses {
 public:
  BusMachine() {
    if (missing() == nullptr) open();
  }

  static const char* missing() {
    return isInstalled("dbus-daemon") ? nullptr : "dbus-daemon is not installed";
  }
  bool settles(const std::function<bool()>& condition) { return eventually(condition); }
};

/// Handles all messages that the bus had for this connection.
inline void handleEverything(EventLoop& loop, Bus& bus) {
  bool isHandled = false;
  const BusSlot slot = bus.callAsync(
      {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId"}, {},
      [&](const BusReply&) { isHandled = true; });
  EXPECT_TRUE(slot && runUntil(loop, [&] { return isHandled; }));
}

/// The name by which the bus knows a connection.
inline std::string uniqueName(Bus& bus) {
  const char* name = nullptr;
  return bus.connect() >= 0 && sd_bus_get_unique_name(bus.handle(), &name) >= 0 ? name : "";
}

}  // namespace platform::testing
