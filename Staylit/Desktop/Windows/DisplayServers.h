#pragma once

#include <string>
#include <vector>

#include "Platform/Posix/Files/Descriptor.h"

namespace staylit::windows {

/// Tells who serves a display on this machine.
///
/// X servers also listen at an address that is no file and that nobody guards: once the address is
/// free, any user may take it, and clients try it first. A display counts as ours when its server
/// runs as this user or as the administrator. For displays of other machines, whoever sets DISPLAY
/// is responsible. A server that takes no connection, so that its user cannot be seen, counts as a
/// stranger.

/// The servers that listen where a client of a display would connect. They get no message.
///
/// The connections stay open as long as this object lives. Let it live until the client has its own
/// connection: a busy X server that sees one connection close may close the next one with it.
class DisplayListeners {
 public:
  /// `display` as DISPLAY names it (":0").
  explicit DisplayListeners(const std::string& display);
  /// The same for the Wayland display that WAYLAND_DISPLAY names.
  static DisplayListeners ofWayland();

  [[nodiscard]] bool areStrangers() const { return areStrangers_; }

 private:
  DisplayListeners() = default;
  void ask(const std::string& path, bool isAbstract);

  bool areStrangers_ = false;
  std::vector<platform::Descriptor> connections_;
};

/// Whether this process has a connection to a stranger's display.
[[nodiscard]] bool isServedByStrangers();

}  // namespace staylit::windows
