#pragma once

#include <string>
#include <vector>

#include "Platform/Posix/Files/Descriptor.h"

namespace staylit::windows {

// Tells whether strangers serve a display on this machine.
//
// X servers listen at two addresses: a file, and an address that is no file and that nobody guards.
// Any user may take the second one while it is free, and clients try it first. So a server counts
// as a stranger unless it runs as this user or as the administrator. A server that takes no
// connection counts as a stranger too, because its user cannot be seen. Whoever sets DISPLAY is
// responsible for displays of other machines.

/// Connections to the servers that listen where a client of a display would connect. No message is
/// sent over them.
///
/// They stay open as long as this object lives. Let it live until the client has its own
/// connection: a busy X server that sees one connection close may close the next one with it.
class DisplayListeners {
 public:
  /// `display` has the form of DISPLAY (":0").
  explicit DisplayListeners(const std::string& display);
  /// The same for the Wayland display that WAYLAND_DISPLAY names.
  static DisplayListeners ofWayland();

  /// Whether one of the servers is a stranger.
  [[nodiscard]] bool areStrangers() const { return areStrangers_; }

 private:
  DisplayListeners() = default;
  void ask(const std::string& path, bool isAbstract);

  bool areStrangers_ = false;
  std::vector<platform::Descriptor> connections_;
};

/// Whether this process has a connection to a display that a stranger serves.
[[nodiscard]] bool isServedByStrangers();

}  // namespace staylit::windows
