#include "Platform/Linux/Proc/ProcStat.h"

#include "Tests/Fuzz/Fuzzer.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = fuzz::textOf(data, size);
  const auto stat = platform::parseProcStat(text);
  if (stat) fuzz::require(text.find("(" + stat->comm + ")") != std::string_view::npos);
  return 0;
}
