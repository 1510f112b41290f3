#include "Platform/Linux/Applications/UnitName.h"
#include "Tests/Fuzz/Fuzzer.h"
#include "Tidewell/Utf8.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto unit = platform::UnitName::fromControlGroup(fuzz::textOf(data, size));
  for (const std::string& id : unit.applicationIds()) {
    fuzz::require(!id.empty() && id.front() != '.' && id.find('/') == std::string::npos);
    fuzz::require(tidewell::isValidUtf8(id));
  }
  return 0;
}
