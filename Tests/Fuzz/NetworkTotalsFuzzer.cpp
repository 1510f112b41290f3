#include <algorithm>

#include "Platform/MacOS/Network/NettopMeter.h"
#include "Tests/Fuzz/Fuzzer.h"

namespace {

/// Totals beyond 64 bits end the process on purpose; numbers of 16 digits cannot get there within
/// the size of an input.
bool hasLongNumber(std::string_view text) {
  std::size_t digits = 0;
  return std::ranges::any_of(text, [&digits](char character) {
    digits = character >= '0' && character <= '9' ? digits + 1 : 0;
    return digits > 16;
  });
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = fuzz::textOf(data, size);
  if (hasLongNumber(text)) return 0;
  const auto lines = static_cast<std::size_t>(std::ranges::count(text, '\n')) + 1;
  fuzz::require(platform::NettopMeter::parse(text).size() <= lines);
  return 0;
}
