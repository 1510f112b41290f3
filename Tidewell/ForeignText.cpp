#include "Tidewell/ForeignText.h"

#include <algorithm>
#include <cstdint>

#include "Tidewell/Utf8.h"

namespace tidewell {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// A copy of `bytes` with U+FFFD in place of each broken sequence, and of each code point that
/// `isAllowed` refuses.
template <typename Predicate>
std::string copied(std::string_view bytes, Predicate isAllowed) {
  std::string copy;
  copy.reserve(bytes.size());
  while (!bytes.empty()) {
    const Utf8Sequence sequence = firstSequence(bytes);
    const bool isKept = sequence.codePoint && isAllowed(*sequence.codePoint);
    copy.append(isKept ? bytes.substr(0, sequence.length) : kReplacement);
    bytes.remove_prefix(sequence.length);
  }
  return copy;
}

bool isPrintableAscii(char character) {
  return character >= ' ' && character <= '~';
}

bool isControl(std::uint32_t character) {
  return character < 0x20 || (character >= 0x7F && character <= 0x9F);
}

bool breaksLine(std::uint32_t character) {
  return character == 0x2028 || character == 0x2029;
}

bool turnsDirection(std::uint32_t character) {
  return (character >= 0x202A && character <= 0x202E) ||
         (character >= 0x2066 && character <= 0x2069);
}

bool isNoncharacter(std::uint32_t character) {
  return (character >= 0xFDD0 && character <= 0xFDEF) || (character & 0xFFFE) == 0xFFFE;
}

bool isSafe(std::uint32_t character) {
  return !isControl(character) && !breaksLine(character) && !turnsDirection(character) &&
         !isNoncharacter(character);
}

}  // namespace

std::string wellFormed(std::string_view bytes) {
  return copied(bytes, [](std::uint32_t) { return true; });
}

std::string cleaned(std::string_view bytes, std::size_t mostCharacters) {
  // What lies beyond the limit need not even be looked at.
  constexpr std::size_t kMostBytesOfACharacter = 4;
  if (bytes.size() / kMostBytesOfACharacter > mostCharacters) {
    bytes = bytes.substr(0, (mostCharacters + 1) * kMostBytesOfACharacter);
  }
  // Nearly every name is plain, and hundreds of names are cleaned at a time.
  const bool isPlain = std::ranges::all_of(bytes, isPrintableAscii);
  return shortened(isPlain ? std::string(bytes) : copied(bytes, isSafe), mostCharacters);
}

std::string withoutMarkup(std::string_view text) {
  std::string harmless;
  harmless.reserve(text.size());
  for (const char character : text) {
    if (character == '<') {
      harmless += "‹";
    } else if (character == '>') {
      harmless += "›";
    } else if (character == '&') {
      harmless += "＆";
    } else {
      harmless += character;
    }
  }
  return harmless;
}

std::string shortened(std::string text, std::size_t mostCharacters) {
  if (text.size() <= mostCharacters) return text;
  std::size_t characters = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool isContinued = (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U;
    if (isContinued || ++characters <= mostCharacters) continue;
    text.resize(at);
    return text + "…";
  }
  return text;
}

}  // namespace tidewell
