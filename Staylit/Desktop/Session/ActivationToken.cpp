#include "Staylit/Desktop/Session/ActivationToken.h"

#include <chrono>
#include <cstdlib>
#include <string>
#include <utility>

#include "Platform/Linux/Time/BootTime.h"

namespace staylit {
namespace {

/// Longer than a click takes to become a request for a window. The token of a click that asked for
/// no window must not serve a much later window.
constexpr std::chrono::seconds kLifetime{10};

struct Kept {
  std::string token;
  tidewell::Moment since;
};

Kept& kept() {
  static Kept token;
  return token;
}

}  // namespace

void ActivationToken::set(const std::string& token) {
  kept() = {token, platform::BootTime::now()};
}

void ActivationToken::use() {
  const auto [token, since] = std::exchange(kept(), {});
  if (token.empty() || platform::BootTime::now() - since > kLifetime) return;
  ::setenv("XDG_ACTIVATION_TOKEN", token.c_str(), 1);
  ::setenv("DESKTOP_STARTUP_ID", token.c_str(), 1);
}

}  // namespace staylit
