#pragma once

#include <string>

namespace staylit {

/// The window system's permission to bring a window to the front, which comes with the click that
/// asked for the window. Main thread only.
class ActivationToken {
 public:
  ActivationToken() = delete;

  /// Keeps it for a window that is asked for in the next seconds; an empty one is none.
  static void set(const std::string& token);
  /// Puts it into the environment, where toolkits look for it, and forgets it.
  static void use();
};

}  // namespace staylit
