#include <algorithm>
#include <string>
#include <string_view>

#include "Platform/Linux/Applications/UnitName.h"
#include "Tests/Fuzz/Fuzzer.h"
#include "Tidewell/Utf8.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto unit = platform::UnitName::fromControlGroup(fuzz::textOf(data, size));
  const std::string_view name = unit.name();
  fuzz::require(unit.path().ends_with(name) && name.find('/') == std::string_view::npos);
  fuzz::require(name.empty() == unit.path().empty());
  for (const std::string& id : unit.applicationIds()) {
    fuzz::require(!id.empty() && id.front() != '.' && id.find('/') == std::string::npos);
    fuzz::require(tidewell::isValidUtf8(id) && id.size() <= 255);
    fuzz::require(std::ranges::none_of(id, [](unsigned char byte) { return byte < ' '; }));
  }
  return 0;
}
