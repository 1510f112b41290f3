// One process of a crowd: "awake" wakes ten times a second for a moment's work, anything else
// sleeps. Ends with its parent.

#include <sys/prctl.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string_view>
#include <thread>

int main(int argc, char** argv) {
  using namespace std::chrono_literals;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  const bool awake = argc > 1 && std::string_view(argv[1]) == "awake";
  while (true) {
    if (!awake) {
      pause();
      continue;
    }
    const auto end = std::chrono::steady_clock::now() + 20us;
    while (std::chrono::steady_clock::now() < end) {
    }
    std::this_thread::sleep_for(100ms);
  }
}
