#pragma once

#include <memory>
#include <optional>
#include <string>

namespace staylit::windows {

/// A Qt platform on which windows can be shown.
struct UsablePlatform {
  std::string name;
  /// How that was found out, to be kept until Qt is connected itself: a display server may end or
  /// start afresh when its last client leaves. Null where there is no display behind it.
  std::shared_ptr<void> connection;
};

/// Absent when there is none: no display, one that refuses us, or no plugin for it; why, is said on
/// standard error.
///
/// Qt takes the process down when it cannot start, which a program without windows must not suffer.
/// So what Qt is about to do is tried first: loading its plugin, and connecting, which waits for as
/// long as the display does not answer. A display that another user serves is not even greeted: the
/// greeting holds the key to ours. Prefers what Qt would (QT_QPA_PLATFORM, then the session's own
/// kind). To be asked before there is a QApplication.
std::optional<UsablePlatform> usablePlatform();

}  // namespace staylit::windows
