#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <string_view>

#include "Tidewell/Ports/Text.h"

namespace tidewell {

/// Knows only ASCII, and the characters that a test adds to `lowercase`. A character is a code
/// point.
class FakeText : public Text {
 public:
  std::string lowercased(std::string_view text) override {
    std::string result;
    while (!text.empty()) {
      const std::string_view character = text.substr(0, characterLength(text));
      text.remove_prefix(character.size());
      const auto known = lowercase.find(character);
      result += known == lowercase.end() ? lowercasedASCII(character) : known->second;
    }
    return result;
  }

  std::weak_ordering localizedCaseInsensitiveCompare(std::string_view left,
                                                     std::string_view right) override {
    return lowercased(left) <=> lowercased(right);
  }

  std::string padded(std::string_view text, std::size_t length) override {
    std::string result;
    for (std::size_t character = 0; character < length; ++character) {
      const std::size_t bytes = characterLength(text);
      result += bytes == 0 ? std::string_view(" ") : text.substr(0, bytes);
      text.remove_prefix(bytes);
    }
    return result;
  }

  /// Lower-case forms of characters beyond ASCII.
  std::map<std::string, std::string, std::less<>> lowercase;

 private:
  static std::size_t characterLength(std::string_view text) {
    std::size_t length = text.empty() ? 0 : 1;
    while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
      ++length;
    return length;
  }

  static std::string lowercasedASCII(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), [](char character) {
      return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                  : character;
    });
    return result;
  }
};

}  // namespace tidewell
