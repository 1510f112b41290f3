#pragma once

#include <string>
#include <vector>

#include "Platform/Posix/Files/Descriptor.h"

namespace staylit::windows {

/// Who serves a display on this machine.
///
/// X servers also listen on an address that is no file and that nobody guards: once it is free, any
/// user may take it, and clients try it first. A display counts as ours when its server runs as
/// this user or as the administrator. Displays of other machines are the matter of whoever sets
/// DISPLAY. One that takes no connection, so that its user cannot be seen, counts as a stranger's.

/// Those who listen where a client of a display would connect to. They are told nothing.
///
/// The connections stay open for as long as this lives. Let it live until the client has its own
/// connection: a busy X server that sees one connection close may close the next one with it.
class DisplayListeners {
 public:
  /// `display` as DISPLAY names it (":0").
  explicit DisplayListeners(const std::string& display);
  /// Of the Wayland display that WAYLAND_DISPLAY names.
  static DisplayListeners ofWayland();

  [[nodiscard]] bool areStrangers() const { return areStrangers_; }

 private:
  DisplayListeners() = default;
  void ask(const std::string& path, bool isAbstract);

  bool areStrangers_ = false;
  std::vector<platform::Descriptor> connections_;
};

/// Whether a connection that this process has to a display is to a stranger's.
[[nodiscard]] bool isServedByStrangers();

}  // namespace staylit::windows
