#pragma once

#include <string>

namespace staylit {

/// The window system's permission to bring a window to the front. It comes with the click that
/// asked for the window. Main thread only.
class ActivationToken {
 public:
  ActivationToken() = delete;

  /// Keeps the token for a window that is asked for in the next seconds. An empty token is no
  /// permission.
  static void set(const std::string& token);
  /// Puts the token into the environment, where toolkits look for it, and forgets it.
  static void use();
};

}  // namespace staylit
