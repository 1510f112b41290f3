// Works and rests by the clock, in milliseconds, so many times, and then ends:
//
//   pulse WORK REST TIMES

#include <chrono>
#include <cstdlib>
#include <thread>

int main(int argc, char** argv) {
  using std::chrono::milliseconds;
  using std::chrono::steady_clock;
  if (argc != 4) return 2;
  const milliseconds work(std::atoi(argv[1]));
  const milliseconds rest(std::atoi(argv[2]));
  for (int times = std::atoi(argv[3]); times > 0; --times) {
    const auto end = steady_clock::now() + work;
    while (steady_clock::now() < end) {
    }
    std::this_thread::sleep_for(rest);
  }
}
