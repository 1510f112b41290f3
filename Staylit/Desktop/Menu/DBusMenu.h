#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Bus/BusObject.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Staylit/Desktop/Menu/MenuHosts.h"
#include "Staylit/Desktop/Menu/MenuLayout.h"
#include "Staylit/UserInterface.h"
#include "Tidewell/WeakReference.h"

namespace staylit {

/// Does what the menu's item with `action` does. Does nothing when there is no such item.
void choose(MenuDelegate& menu, MenuItem::Action action);

/// The status item's menu on the session bus, as `com.canonical.dbusmenu`.
///
/// The delegate is asked for the menu when a host is about to show it, when a host wants its
/// layout, at every tick of `MenuHosts` while a host has the menu open, and at `refresh` once a
/// host knows the menu. Hosts are told what changed. The delegate gets choices from the loop, never
/// from within a call. Main thread only; all arguments must outlive it.
class DBusMenu {
 public:
  static constexpr const char* kPath = "/MenuBar";
  static constexpr const char* kInterface = "com.canonical.dbusmenu";

  DBusMenu(platform::EventLoop& loop, platform::Bus& bus, MenuDelegate& delegate);
  DBusMenu(const DBusMenu&) = delete;
  DBusMenu& operator=(const DBusMenu&) = delete;

  /// Call it when the menu has other rows, other check marks or another state; for mere figures an
  /// open menu is refreshed by itself, and a closed one need not know them. If a host knows the
  /// menu, the loop later asks the delegate for it. While the menu is closed, hosts are told of
  /// other items only if their number changed: many hosts first show the menu that they know, in
  /// the size that it had.
  void refresh();

  /// Does what the item with `action` does, later, from the loop.
  void chooseLater(MenuItem::Action action);

 private:
  /// Some properties by their names, or all properties.
  using Names = std::vector<std::string>;

  static int getLayout(sd_bus_message* call, void* data, sd_bus_error* error);
  static int getGroupProperties(sd_bus_message* call, void* data, sd_bus_error* error);
  static int getProperty(sd_bus_message* call, void* data, sd_bus_error* error);
  static int event(sd_bus_message* call, void* data, sd_bus_error* error);
  static int eventGroup(sd_bus_message* call, void* data, sd_bus_error* error);
  static int aboutToShow(sd_bus_message* call, void* data, sd_bus_error* error);
  static int aboutToShowGroup(sd_bus_message* call, void* data, sd_bus_error* error);
  static const sd_bus_vtable kTable[];

  MenuLayout::Change rebuild();
  MenuLayout::Change rebuildToShow();
  void buildIfUnbuilt();
  void announce(const MenuLayout::Change& change);
  void announceItems(const MenuLayout::Change& change);
  void announceLayout();
  /// Null for an item that is not in the menu.
  [[nodiscard]] const MenuProperties* propertiesOf(std::int32_t id) const;
  int appendItem(sd_bus_message* reply, std::int32_t id, std::int32_t depth,
                 const Names& names) const;
  int appendChildren(sd_bus_message* reply, std::int32_t depth, const Names& names) const;
  /// False when the menu has no such item.
  bool handleEvent(std::int32_t id, const std::string& type, sd_bus_message* call);
  void choose(const MenuItem& item);

  platform::EventLoop& loop_;
  MenuDelegate& delegate_;
  MenuLayout layout_;
  MenuHosts hosts_;
  /// Whether hosts have not yet been told of the present layout, and how many items there were in
  /// the layout of which they were told last.
  bool isLayoutUntold_ = false;
  std::size_t toldCount_ = 0;
  platform::BusObject object_;
  tidewell::WeakReferenceSource<DBusMenu> self_{*this};  ///< For work that is posted.
};

}  // namespace staylit
