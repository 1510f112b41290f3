#include "Platform/Linux/Sleep/LogindHoldTimes.h"

#include "Tests/Fuzz/Fuzzer.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = fuzz::textOf(data, size);
  const auto file = platform::parseLogindHoldFile(text);
  if (!file) return 0;
  fuzz::require(!file->what.empty() && text.find("WHAT=" + file->what) != std::string_view::npos);
  // A text never grows when its backslashes go.
  fuzz::require(file->who.size() + file->why.size() <= size);
  return 0;
}
