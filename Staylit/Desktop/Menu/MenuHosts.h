#pragma once

#include <systemd/sd-bus.h>

#include <functional>
#include <memory>

#include "Platform/Linux/Loop/EventLoop.h"
#include "Tidewell/Ports/MainLoop.h"

namespace staylit {

/// Knows which hosts have the menu open, and ticks while any host has it open.
///
/// Most hosts say when they open the menu and when they close it. A host that leaves the bus, or
/// says nothing for minutes, counts as one that has closed it. Other hosts only ask before they
/// show the menu, and may then have it open for a while. Main thread only; the loop must outlive
/// it.
class MenuHosts {
 public:
  /// `refresh` is called as often as the engine ticks while the menu is or may be open, and once
  /// more when it no longer may be.
  MenuHosts(platform::EventLoop& loop, std::function<void()> refresh);
  ~MenuHosts();
  MenuHosts(const MenuHosts&) = delete;
  MenuHosts& operator=(const MenuHosts&) = delete;

  /// The sender of `message` opened or closed the menu.
  void opened(sd_bus_message* message);
  void closed(sd_bus_message* message);

  /// A host is about to show the menu, and may never tell when it closes it.
  void mayHaveOpened();
  /// A host that may have had the menu open has closed it.
  void surelyClosed();

  [[nodiscard]] bool isOpen() const { return timer_ != nullptr; }
  /// Whether the menu was shown a moment ago by a host that does not tell when it closes it. Such a
  /// host gives the menu its height before it asks, and cannot make room for another layout until
  /// it shows the menu again.
  [[nodiscard]] bool mustKeepLayout() const;

 private:
  static int allLeft(sd_bus_track* track, void* data);
  [[nodiscard]] bool isTracking() const { return track_ && sd_bus_track_count(track_) > 0; }
  void follow(sd_bus* bus);
  void forget();
  void startClock();
  void stopClockIfIdle();
  void tick();

  platform::EventLoop& loop_;
  std::function<void()> refresh_;
  sd_bus* bus_ = nullptr;  ///< The bus of `track_`, which keeps the bus alive.
  sd_bus_track* track_ = nullptr;
  std::unique_ptr<tidewell::RepeatingTimer> timer_;
  int trackedTicks_ = 0;  ///< For how long those that said "opened" still count as open.
  int guessedTicks_ = 0;  ///< For how long the others still may have the menu open.
  int keptTicks_ = 0;     ///< For how long the others must keep their layout.
};

}  // namespace staylit
