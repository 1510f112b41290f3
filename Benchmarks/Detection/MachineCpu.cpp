#include "Benchmarks/Detection/MachineCpu.h"

#include <fstream>
#include <string>
#include <utility>

MachineCpu::MachineCpu() : before_(read()) {}

double MachineCpu::percent() {
  const Times now = read();
  const Times before = std::exchange(before_, now);
  if (now.all <= before.all) return 0;
  return 100 * static_cast<double>(now.busy - before.busy) /
         static_cast<double>(now.all - before.all);
}

MachineCpu::Times MachineCpu::read() {
  std::ifstream file("/proc/stat");
  std::string label;
  file >> label;
  Times times;
  // user, nice, system, idle, waiting, interrupts, soft interrupts, stolen; the guests' that follow
  // are part of the first two.
  for (int field = 0; field < 8; ++field) {
    std::uint64_t time = 0;
    if (!(file >> time)) break;
    times.all += time;
    if (field != 3 && field != 4) times.busy += time;
  }
  return times;
}
