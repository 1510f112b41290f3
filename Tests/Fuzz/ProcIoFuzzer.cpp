#include "Platform/Linux/Proc/ProcIo.h"

#include "Tests/Fuzz/Fuzzer.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = fuzz::textOf(data, size);
  const auto io = platform::parseProcIo(text);
  if (!io) return 0;
  fuzz::require(text.find("read_bytes") != std::string_view::npos);
  fuzz::require(text.find("write_bytes") != std::string_view::npos);
  return 0;
}
