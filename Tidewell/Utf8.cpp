#include "Tidewell/Utf8.h"

namespace tidewell {
namespace {

std::uint32_t byteAt(std::string_view bytes, std::size_t index) {
  return index < bytes.size() ? static_cast<unsigned char>(bytes[index]) : 0;
}

bool within(std::uint32_t value, std::uint32_t low, std::uint32_t high) {
  return value >= low && value <= high;
}

/// How many bytes a character has that begins with `first`; 0 when no character begins so.
std::size_t sequenceLength(std::uint32_t first) {
  if (first < 0x80) return 1;
  if (within(first, 0xC2, 0xDF)) return 2;
  if (within(first, 0xE0, 0xEF)) return 3;
  return within(first, 0xF0, 0xF4) ? 4 : 0;
}

/// The bounds are those of table 3-7 of the Unicode standard.
bool isSecondByte(std::uint32_t first, std::uint32_t second) {
  const std::uint32_t low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
  const std::uint32_t high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
  return within(second, low, high);
}

}  // namespace

Utf8Sequence firstSequence(std::string_view bytes) {
  const std::uint32_t first = byteAt(bytes, 0);
  const std::size_t length = sequenceLength(first);
  if (length == 0) return {1, std::nullopt};
  std::uint32_t codePoint = length == 1 ? first : first & (0x7FU >> length);
  for (std::size_t index = 1; index < length; ++index) {
    const std::uint32_t next = byteAt(bytes, index);
    const bool fits = index == 1 ? isSecondByte(first, next) : within(next, 0x80, 0xBF);
    if (!fits) return {index, std::nullopt};
    codePoint = codePoint << 6 | (next & 0x3FU);
  }
  return {length, codePoint};
}

bool isValidUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const Utf8Sequence sequence = firstSequence(bytes);
    if (!sequence.codePoint) return false;
    bytes.remove_prefix(sequence.length);
  }
  return true;
}

}  // namespace tidewell
