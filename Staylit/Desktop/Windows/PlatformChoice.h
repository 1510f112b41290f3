#pragma once

#include <memory>
#include <optional>
#include <string>

namespace staylit::windows {

/// A Qt platform on which windows can be shown.
struct ChosenPlatform {
  std::string name;
  /// The connection by which this was found out. Keep it until Qt has connected itself, because a
  /// display server may end or start afresh when its last client leaves. Null for a platform
  /// without a display.
  std::shared_ptr<void> connection;
};

/// Absent when no platform can be used: there is no display, the display refuses us, or Qt has no
/// plugin for it. Standard error then says why.
///
/// Qt ends the process when it cannot start, and a program must not end for want of windows. So
/// this function first tries what Qt is about to do: it loads Qt's plugin, and connects, which
/// takes as long as the display does not answer. It sends nothing to a display that another user
/// serves, because the greeting would hold the key to our display. It prefers what Qt would prefer
/// (QT_QPA_PLATFORM, then the session's own kind). Call it before there is a QApplication.
std::optional<ChosenPlatform> choosePlatform();

}  // namespace staylit::windows
