#include "Staylit/JsonText.h"

#include <string>

#include "Tests/Fuzz/Fuzzer.h"
#include "Tidewell/ForeignText.h"
#include "Tidewell/Utf8.h"

namespace {

unsigned hexadecimal(std::string_view digits) {
  unsigned value = 0;
  for (const char digit : digits) {
    const bool isDecimal = digit >= '0' && digit <= '9';
    fuzz::require(isDecimal || (digit >= 'a' && digit <= 'f'));
    value = 16 * value + static_cast<unsigned>(isDecimal ? digit - '0' : digit - 'a' + 10);
  }
  return value;
}

/// What a reader of JSON makes of a text, of which only the forms may occur that are written.
std::string read(std::string_view json) {
  fuzz::require(json.size() >= 2 && json.front() == '"' && json.back() == '"');
  json = json.substr(1, json.size() - 2);
  std::string text;
  while (!json.empty()) {
    const char first = json.front();
    fuzz::require(first != '"' && static_cast<unsigned char>(first) >= 0x20 && first != 0x7F);
    json.remove_prefix(1);
    if (first != '\\') {
      text += first;
      continue;
    }
    fuzz::require(!json.empty());
    const char escaped = json.front();
    json.remove_prefix(1);
    if (escaped != 'u') {
      fuzz::require(escaped == '"' || escaped == '\\');
      text += escaped;
      continue;
    }
    fuzz::require(json.size() >= 4);
    text += static_cast<char>(hexadecimal(json.substr(0, 4)));
    json.remove_prefix(4);
  }
  return text;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = fuzz::textOf(data, size);
  const std::string json = staylit::jsonText(text);
  fuzz::require(tidewell::isValidUtf8(json));
  fuzz::require(read(json) == tidewell::wellFormed(text));
  return 0;
}
