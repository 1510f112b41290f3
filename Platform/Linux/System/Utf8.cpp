#include "Platform/Linux/System/Utf8.h"

#include <algorithm>
#include <cstdint>

#include "Tidewell/Utf8.h"

namespace platform {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// Copies `bytes`, with U+FFFD for broken sequences and for the code points that `isAllowed`
/// refuses. A run of bytes that could have become one code point counts as one broken sequence.
template <typename Predicate>
std::string copied(std::string_view bytes, Predicate isAllowed) {
  std::string copy;
  copy.reserve(bytes.size());
  while (!bytes.empty()) {
    const tidewell::Utf8Piece piece = tidewell::firstPiece(bytes);
    const bool isKept = piece.codePoint && isAllowed(*piece.codePoint);
    copy.append(isKept ? bytes.substr(0, piece.length) : kReplacement);
    bytes.remove_prefix(piece.length);
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

std::string cleaned(std::string_view bytes) {
  // Nearly every name is plain, and names are cleaned by the hundred.
  if (std::ranges::all_of(bytes, isPrintableAscii)) return std::string(bytes);
  return copied(bytes, isSafe);
}

std::string shortened(std::string text, std::size_t mostCharacters) {
  std::size_t characters = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool isContinued = (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U;
    if (isContinued || ++characters <= mostCharacters) continue;
    text.resize(at);
    return text + "…";
  }
  return text;
}

}  // namespace platform
