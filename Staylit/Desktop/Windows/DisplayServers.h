#pragma once

#include <string>

namespace staylit::windows {

/// Who serves a display on this machine.
///
/// X servers also listen on an address that is no file and that nobody guards: once it is free, any
/// user may take it, and clients try it first. A display counts as ours when its server runs as
/// this user or as the administrator. Displays of other machines are the matter of whoever sets
/// DISPLAY. One that takes no connection, so that its user cannot be seen, counts as a stranger's.

/// Whether a stranger listens where a client of X would connect to for `display` (":0"). It looks
/// at the listener alone and tells it nothing.
[[nodiscard]] bool isStrangersX(const std::string& display);

/// The same for the Wayland display that WAYLAND_DISPLAY names.
[[nodiscard]] bool isStrangersWayland();

/// Whether a connection that this process has to a display is to a stranger's.
[[nodiscard]] bool isServedByStrangers();

}  // namespace staylit::windows
