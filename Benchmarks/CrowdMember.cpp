// One process of a crowd: "awake" wakes ten times a second for a moment's work, "quiet" only
// sleeps. Ends with its parent, which keeps the other end of its input open.

#include <poll.h>

#include <chrono>
#include <string_view>

namespace {

constexpr int kForEver = -1;

/// Waits, and tells whether the parent is still there then.
bool waitWhileParentLives(int milliseconds) {
  pollfd input{.fd = 0, .events = POLLIN, .revents = 0};
  return poll(&input, 1, milliseconds) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  using namespace std::chrono_literals;
  const std::string_view kind = argc > 1 ? argv[1] : "";
  if (kind != "awake" && kind != "quiet") return 2;
  const bool awake = kind == "awake";
  while (waitWhileParentLives(awake ? 100 : kForEver)) {
    const auto end = std::chrono::steady_clock::now() + 20us;
    while (std::chrono::steady_clock::now() < end) {
    }
  }
}
