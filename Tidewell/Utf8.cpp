#include "Tidewell/Utf8.h"

#include <cstddef>

namespace tidewell {
namespace {

unsigned byteAt(std::string_view bytes, std::size_t index) {
  return index < bytes.size() ? static_cast<unsigned char>(bytes[index]) : 0;
}

bool within(unsigned value, unsigned low, unsigned high) {
  return value >= low && value <= high;
}

/// The length of the well-formed sequence that begins `bytes`, or 0. The bounds of the second byte
/// are those of the Unicode standard's table 3-7.
std::size_t sequenceLength(std::string_view bytes) {
  const unsigned first = byteAt(bytes, 0);
  if (first < 0x80) return 1;
  const std::size_t length = within(first, 0xC2, 0xDF)   ? 2
                             : within(first, 0xE0, 0xEF) ? 3
                             : within(first, 0xF0, 0xF4) ? 4
                                                         : 0;
  const unsigned low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
  const unsigned high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
  if (length == 0 || !within(byteAt(bytes, 1), low, high)) return 0;
  for (std::size_t index = 2; index < length; ++index) {
    if (!within(byteAt(bytes, index), 0x80, 0xBF)) return 0;
  }
  return length;
}

}  // namespace

bool isValidUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::size_t length = sequenceLength(bytes);
    if (length == 0) return false;
    bytes.remove_prefix(length);
  }
  return true;
}

}  // namespace tidewell
