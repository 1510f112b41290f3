#include "Platform/Linux/Applications/DesktopEntry.h"
#include "Platform/Linux/Applications/ExecWords.h"
#include "Tests/Fuzz/Fuzzer.h"
#include "Tidewell/Utf8.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = fuzz::textOf(data, size);
  const auto entry = platform::DesktopEntry::parse(text, {"de_AT@euro", "de_AT", "de@euro", "de"});
  platform::DesktopEntry::localeVariants(text);
  fuzz::require(platform::execWords(text).size() <= text.size());
  if (!entry) return 0;
  fuzz::require(tidewell::isValidUtf8(entry->name));
  fuzz::require(entry->name.find('\n') == std::string::npos);
  fuzz::require(platform::execWords(entry->exec).size() <= entry->exec.size());
  return 0;
}
