#pragma once

#include <systemd/sd-bus.h>

#include <memory>
#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Bus/BusObject.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Staylit/Desktop/Menu/DBusMenu.h"
#include "Staylit/Desktop/StatusItem/StatusIcons.h"
#include "Staylit/UserInterface.h"

namespace staylit {

/// The status item on the session bus, as `org.kde.StatusNotifierItem`, with its menu.
///
/// From the first `show` on, it registers with every `org.kde.StatusNotifierWatcher` that appears,
/// and tries again when a watcher fails. Without a watcher it waits. It does not connect the bus by
/// itself. Main thread only; all arguments must outlive it.
class StatusNotifierItem : public StatusItem {
 public:
  static constexpr const char* kPath = "/StatusNotifierItem";
  static constexpr const char* kInterface = "org.kde.StatusNotifierItem";

  StatusNotifierItem(platform::EventLoop& loop, platform::Bus& bus, MenuDelegate& delegate,
                     StatusIcons icons);

  void show(const StatusItemAppearance& appearance) override;
  void menuChanged() override { menu_.refresh(); }

 private:
  static int property(sd_bus* bus, const char* path, const char* interface, const char* name,
                      sd_bus_message* reply, void* data, sd_bus_error* error);
  static int activate(sd_bus_message* call, void* data, sd_bus_error* error);
  static int ignorePoint(sd_bus_message* call, void* data, sd_bus_error* error);
  static int ignoreScroll(sd_bus_message* call, void* data, sd_bus_error* error);
  static int takeToken(sd_bus_message* call, void* data, sd_bus_error* error);
  static const sd_bus_vtable kTable[];

  int appendProperty(std::string_view name, sd_bus_message* reply) const;
  int appendPixmaps(sd_bus_message* reply) const;
  [[nodiscard]] std::string iconName() const;
  void announce(const StatusItemAppearance& former);
  void followWatcher();
  void registerItem();
  void registerLater();

  platform::EventLoop& loop_;
  platform::Bus& bus_;
  StatusIcons icons_;
  StatusItemAppearance appearance_;
  platform::BusObject object_;
  DBusMenu menu_;
  platform::BusListening watcher_;
  platform::BusSlot registration_;
  std::unique_ptr<tidewell::RepeatingTimer> retry_;
  tidewell::Seconds pause_{0};
};

}  // namespace staylit
