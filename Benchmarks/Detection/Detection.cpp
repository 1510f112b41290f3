// Watches one workload with the program as it is, and beside it with one whose process table keeps
// nothing of the processes that ended. Prints what both saw and did as one JSON document.

#include <cstdio>
#include <string>
#include <vector>

#include "Benchmarks/Detection/Measurement.h"
#include "Benchmarks/Detection/Options.h"

int main(int argc, char** argv) {
  const auto options = Options::parse(std::vector<std::string>(argv + 1, argv + argc));
  if (!options) {
    std::fprintf(stderr, "usage: %s\n", Options::kUsage);
    return 2;
  }
  Measurement measurement(*options);
  if (!measurement.run()) {
    std::fprintf(stderr, "the workload could not be started, or was broken off\n");
    return 1;
  }
  std::fputs(measurement.document().c_str(), stdout);
}
