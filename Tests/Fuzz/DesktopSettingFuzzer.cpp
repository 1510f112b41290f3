#include "Platform/Linux/Sleep/DesktopSetting.h"

#include "Tests/Fuzz/Fuzzer.h"
#include "Tidewell/ForeignText.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = fuzz::textOf(data, size);
  static_cast<void>(platform::parseSettingNumber(text));
  const auto value = platform::parseSettingText(text);
  fuzz::require(!value || tidewell::cleaned(*value) == *value);
  return 0;
}
