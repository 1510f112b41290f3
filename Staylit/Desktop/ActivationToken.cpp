#include "Staylit/Desktop/ActivationToken.h"

#include <cstdlib>
#include <utility>

namespace staylit {
namespace {

std::string& kept() {
  static std::string token;
  return token;
}

}  // namespace

void ActivationToken::set(const std::string& token) {
  kept() = token;
}

void ActivationToken::use() {
  const std::string token = std::exchange(kept(), "");
  if (token.empty()) return;
  ::setenv("XDG_ACTIVATION_TOKEN", token.c_str(), 1);
  ::setenv("DESKTOP_STARTUP_ID", token.c_str(), 1);
}

}  // namespace staylit
