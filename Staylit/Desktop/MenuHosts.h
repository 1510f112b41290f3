#pragma once

#include <systemd/sd-bus.h>

#include <functional>
#include <memory>

#include "Platform/Linux/Loop/EventLoop.h"
#include "Tidewell/Ports/MainLoop.h"

namespace staylit {

/// Who has the menu open, and a clock that ticks as long as anybody has. A host that leaves the bus
/// has closed it, and so has one that says nothing for minutes: not all tell that they close it.
/// Main thread only; the loop must outlive it.
class MenuHosts {
 public:
  /// `refresh` runs every two seconds while the menu is open.
  MenuHosts(platform::EventLoop& loop, std::function<void()> refresh);
  ~MenuHosts();
  MenuHosts(const MenuHosts&) = delete;
  MenuHosts& operator=(const MenuHosts&) = delete;

  /// The sender of `message` opened or closed the menu.
  void opened(sd_bus_message* message);
  void closed(sd_bus_message* message);
  [[nodiscard]] bool isOpen() const { return timer_ != nullptr; }

 private:
  void tick();
  static int allLeft(sd_bus_track* track, void* data);
  void follow(sd_bus* bus);
  void forget();

  platform::EventLoop& loop_;
  std::function<void()> refresh_;
  sd_bus* bus_ = nullptr;  ///< That `track_` is on, which keeps it.
  sd_bus_track* track_ = nullptr;
  std::unique_ptr<tidewell::RepeatingTimer> timer_;
  int ticksLeft_ = 0;
};

}  // namespace staylit
