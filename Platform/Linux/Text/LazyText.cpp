#include "Platform/Linux/Text/LazyText.h"

#include <algorithm>
#include <utility>

#include "Tidewell/ForeignText.h"
#include "Tidewell/Utf8.h"

namespace platform {
namespace {

bool isAscii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string lowercasedAscii(std::string_view text) {
  std::string lower(text);
  for (char& character : lower) {
    if (character >= 'A' && character <= 'Z') character = static_cast<char>(character - 'A' + 'a');
  }
  return lower;
}

std::string paddedCodePoints(std::string_view text, std::size_t length) {
  std::string padded;
  std::size_t count = 0;
  for (; count < length && !text.empty(); ++count) {
    const std::size_t size = tidewell::firstSequence(text).length;
    padded += text.substr(0, size);
    text.remove_prefix(size);
  }
  return padded.append(length - count, ' ');
}

}  // namespace

LazyText::LazyText(std::function<Expert()> fetch) : fetch_(std::move(fetch)) {}

std::string LazyText::lowercased(std::string_view text) {
  if (isAscii(text)) return lowercasedAscii(text);
  tidewell::Text* unicode = expert();
  return unicode ? unicode->lowercased(text) : lowercasedAscii(tidewell::wellFormed(text));
}

std::weak_ordering LazyText::localizedCaseInsensitiveCompare(std::string_view left,
                                                             std::string_view right) {
  // Languages differ even in the order of plain letters.
  if (tidewell::Text* unicode = expert()) {
    return unicode->localizedCaseInsensitiveCompare(left, right);
  }
  return lowercasedAscii(left) <=> lowercasedAscii(right);
}

std::string LazyText::padded(std::string_view text, std::size_t length) {
  // A carriage return and the line feed after it are one character.
  if (isAscii(text) && text.find('\r') == std::string_view::npos) {
    return paddedCodePoints(text, length);
  }
  tidewell::Text* unicode = expert();
  return unicode ? unicode->padded(text, length)
                 : paddedCodePoints(tidewell::wellFormed(text), length);
}

tidewell::Text* LazyText::expert() {
  std::call_once(once_, [this] { expert_ = fetch_(); });
  return expert_.get();
}

}  // namespace platform
