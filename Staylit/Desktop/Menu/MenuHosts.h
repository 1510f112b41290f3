#pragma once

#include <systemd/sd-bus.h>

#include <functional>
#include <memory>

#include "Platform/Linux/Loop/EventLoop.h"
#include "Tidewell/Ports/MainLoop.h"

namespace staylit {

/// Who has the menu open, and a clock that ticks as long as anybody has.
///
/// Most hosts tell when they open the menu and when they close it; one that leaves the bus, or says
/// nothing for minutes, has closed it. Others only ask before they show it: such a host may have it
/// open for a while after that. Main thread only; the loop must outlive it.
class MenuHosts {
 public:
  /// `refresh` runs as often as the engine ticks while the menu is open, and once after it may have
  /// been.
  MenuHosts(platform::EventLoop& loop, std::function<void()> refresh);
  ~MenuHosts();
  MenuHosts(const MenuHosts&) = delete;
  MenuHosts& operator=(const MenuHosts&) = delete;

  /// The sender of `message` opened or closed the menu.
  void opened(sd_bus_message* message);
  void closed(sd_bus_message* message);

  /// Somebody is about to show the menu, and may never say more.
  void mayHaveOpened();
  /// Who may have had it open has it open no longer.
  void surelyClosed();

  [[nodiscard]] bool isOpen() const { return timer_ != nullptr; }
  /// Whether it is open only with hosts that do not tell, which also cannot make room for another
  /// layout.
  [[nodiscard]] bool isOnlyGuessed() const { return guessedTicks_ > 0 && !isTracking(); }

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
  sd_bus* bus_ = nullptr;  ///< That `track_` is on, which keeps it.
  sd_bus_track* track_ = nullptr;
  std::unique_ptr<tidewell::RepeatingTimer> timer_;
  int trackedTicks_ = 0;  ///< How long those that tell are believed.
  int guessedTicks_ = 0;
};

}  // namespace staylit
