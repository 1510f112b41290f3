#include "Platform/Linux/Network/ToolName.h"

#include <algorithm>
#include <cstddef>

#include "Tidewell/Utf8.h"

namespace platform {
namespace {

constexpr std::size_t kLongestCharacter = 4;

/// The length of the UTF-8 character that begins `text`, or 0.
std::size_t characterLength(std::string_view text) {
  const std::size_t most = std::min(text.size(), kLongestCharacter);
  for (std::size_t length = 1; length <= most; ++length) {
    if (tidewell::isValidUtf8(text.substr(0, length))) return length;
  }
  return 0;
}

/// Of the first and the second block of control characters.
bool isControl(std::string_view character) {
  const auto first = static_cast<unsigned char>(character[0]);
  if (character.size() == 1) return first < 0x20 || first == 0x7F;
  return first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;
}

}  // namespace

void appendToolName(std::string& line, std::string_view name) {
  while (!name.empty()) {
    const std::size_t length = characterLength(name);
    const std::string_view character = name.substr(0, std::max<std::size_t>(length, 1));
    const bool isClean = length != 0 && character != "," && !isControl(character);
    line.append(isClean ? character : "_");
    name.remove_prefix(character.size());
  }
}

}  // namespace platform
