#pragma once

#include <memory>
#include <optional>
#include <string>

namespace staylit::windows {

/// A Qt platform on which windows can be shown.
struct ChosenPlatform {
  std::string name;
  /// The connection of the attempt. Keep it until Qt has connected itself, because a display server
  /// may end or start afresh when its last client leaves. Null for a platform without a display.
  std::shared_ptr<void> connection;
};

/// The first platform that can be used, in the order that Qt would take (QT_QPA_PLATFORM, then the
/// session's own kind). Absent when there is no display, the display refuses us, or Qt has no
/// plugin for it; standard error then says why.
///
/// Qt ends the process when it cannot start, and the program must not end because it lacks windows.
/// So this function first tries what Qt is about to do: it loads Qt's plugin and connects, and it
/// waits until the display answers. It sends nothing to a display that another user serves, because
/// the greeting would hold the key to our display. Call it before there is a QApplication.
std::optional<ChosenPlatform> choosePlatform();

}  // namespace staylit::windows
