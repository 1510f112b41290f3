#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

#include "Tidewell/Utf8.h"

namespace staylit::campaign {

using Random = std::mt19937_64;

/// At least 0 and less than `end`.
inline std::size_t below(Random& random, std::size_t end) {
  return std::uniform_int_distribution<std::size_t>(0, end - 1)(random);
}

/// A piece of text that may do harm: an escape sequence, a mark of direction, broken UTF-8, markup,
/// and the like.
inline std::string_view nastyPiece(Random& random) {
  static constexpr std::string_view kPieces[] = {"\x1B]0;title\x07",
                                                 "\x1B[2J",
                                                 "\x1B[31m",
                                                 "\x07",
                                                 "\x08",
                                                 "\x7F",
                                                 "\n",
                                                 "\r",
                                                 "\t",
                                                 "\xC2\x85",
                                                 "\xC2\x9B",
                                                 "\xE2\x80\xA8",
                                                 "\xE2\x80\xA9",
                                                 "\xE2\x80\xAE",
                                                 "\xE2\x81\xA6",
                                                 "\xEF\xBF\xBF",
                                                 "\xFF",
                                                 "\xC0\xAF",
                                                 "\xED\xA0\x80",
                                                 "\xF0\x9F\x98",
                                                 "\x80",
                                                 "<b>",
                                                 "</b>",
                                                 "&amp;",
                                                 "&",
                                                 "_",
                                                 "%s%n",
                                                 "\"'`$(id)",
                                                 "]]]",
                                                 "\xF0\x9F\x98\x80",
                                                 "\xC3\xA4",
                                                 "name",
                                                 "org.example.Tool",
                                                 " ",
                                                 "\\x1b"};
  return kPieces[below(random, std::size(kPieces))];
}

/// A hostile name of such pieces and of random bytes, without a zero or a slash, so that it can be
/// the name of a file. At most 200 bytes.
inline std::string hostileName(Random& random) {
  std::string name;
  const std::size_t pieces = 1 + below(random, 8);
  for (std::size_t piece = 0; piece < pieces; ++piece) {
    name += nastyPiece(random);
    for (std::size_t count = below(random, 6); count > 0; --count)
      name += static_cast<char>(1 + below(random, 255));
  }
  for (char& character : name) {
    if (character == '/') character = '|';
  }
  name.resize(std::min<std::size_t>(name.size(), 200));
  return name;
}

/// A hostile name that a bus lets pass: valid UTF-8 without the code points that are no characters.
inline std::string hostileText(Random& random) {
  std::string text;
  const std::string whole = hostileName(random);
  for (std::string_view name = whole; !name.empty();) {
    const tidewell::Utf8Sequence sequence = tidewell::firstSequence(name);
    const std::uint32_t code = sequence.codePoint.value_or(0xFFFF);
    const bool isRefused = (code >= 0xFDD0 && code <= 0xFDEF) || (code & 0xFFFE) == 0xFFFE;
    if (!isRefused) text += name.substr(0, sequence.length);
    name.remove_prefix(sequence.length);
  }
  return text;
}

/// Names something in `text` that may harm whoever reads it; empty when there is nothing. `lines`
/// says whether line feeds are allowed.
inline std::string harmIn(std::string_view text, bool lines = false) {
  while (!text.empty()) {
    const tidewell::Utf8Sequence sequence = tidewell::firstSequence(text);
    if (!sequence.codePoint) return "broken UTF-8";
    const std::uint32_t code = *sequence.codePoint;
    const bool isLine = lines && code == '\n';
    if ((code < 0x20 || (code >= 0x7F && code <= 0x9F)) && !isLine) return "a control character";
    if (code == 0x2028 || code == 0x2029) return "a line separator";
    const bool turns = (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
    if (turns) return "a mark of direction";
    text.remove_prefix(sequence.length);
  }
  return "";
}

}  // namespace staylit::campaign
