// One process of a crowd: "awake" wakes ten times a second for a moment's work, anything else
// sleeps. Ends with its parent, which keeps the other end of its input open.

#include <poll.h>

#include <chrono>
#include <string_view>

namespace {

constexpr int kForEver = -1;

/// Whether the parent is still there after so many milliseconds.
bool rest(int milliseconds) {
  pollfd input{.fd = 0, .events = POLLIN, .revents = 0};
  return poll(&input, 1, milliseconds) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  using namespace std::chrono_literals;
  const bool awake = argc > 1 && std::string_view(argv[1]) == "awake";
  while (rest(awake ? 100 : kForEver)) {
    const auto end = std::chrono::steady_clock::now() + 20us;
    while (std::chrono::steady_clock::now() < end) {
    }
  }
}
