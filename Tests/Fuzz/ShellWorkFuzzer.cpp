#include "Platform/Linux/Processes/ShellWork.h"

#include "Tests/Fuzz/Fuzzer.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = fuzz::textOf(data, size);
  const platform::ShellWork work = platform::shellWork(text);
  const bool isScript = work.kind == platform::ShellWork::Kind::script;
  fuzz::require(isScript == !work.script.empty());
  fuzz::require(work.script.find('/') == std::string_view::npos);
  fuzz::require(work.script.find('\0') == std::string_view::npos);
  fuzz::require(text.find(work.script) != std::string_view::npos);
  return 0;
}
