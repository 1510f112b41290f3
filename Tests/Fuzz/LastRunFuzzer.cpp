#include "Platform/Linux/Proc/LastRun.h"

#include "Tests/Fuzz/Fuzzer.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = fuzz::textOf(data, size);
  const auto lastRun = platform::parseLastRun(text);
  fuzz::require(!lastRun || (*lastRun > 0 && *lastRun < 2e16));
  static_cast<void>(platform::parseProcessor(text));
  return 0;
}
