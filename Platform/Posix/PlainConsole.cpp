#include "Platform/Posix/PlainConsole.h"

#include <algorithm>
#include <array>
#include <utility>

#include "Tidewell/Utf8.h"

namespace platform {
namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 10> kAlike = {
    {{"—", "-"},
     {"–", "-"},
     {"…", "..."},
     {"·", "|"},
     {"→", "->"},
     {"“", "\""},
     {"”", "\""},
     {"‘", "'"},
     {"’", "'"},
     {"\u00A0", " "}}};

}  // namespace

std::string inAscii(std::string_view text) {
  std::string plain;
  while (!text.empty()) {
    const std::string_view character = text.substr(0, tidewell::firstSequence(text).length);
    const auto* alike = std::ranges::find(kAlike, character, &decltype(kAlike)::value_type::first);
    const bool isAscii = static_cast<unsigned char>(character.front()) < 0x80;
    plain += isAscii ? character : alike == kAlike.end() ? "?" : alike->second;
    text.remove_prefix(character.size());
  }
  return plain;
}

}  // namespace platform
