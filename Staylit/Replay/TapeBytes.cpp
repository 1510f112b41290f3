#include "Staylit/Replay/TapeBytes.h"

#include <bit>
#include <utility>

namespace staylit {
namespace {

constexpr unsigned kBitsOfNumber = 7;
constexpr std::uint8_t kMore = 0x80;
constexpr unsigned kBitsOfWord = 64;
constexpr unsigned kBitsOfByte = 8;

}  // namespace

void TapeBytesWriter::number(std::uint64_t value) {
  for (; value >= kMore; value >>= kBitsOfNumber)
    byte(static_cast<std::uint8_t>(value | kMore));
  byte(static_cast<std::uint8_t>(value));
}

void TapeBytesWriter::signedNumber(std::int64_t value) {
  // The sign becomes the lowest bit.
  const auto bits = static_cast<std::uint64_t>(value);
  number((bits << 1U) ^ (value < 0 ? ~std::uint64_t{0} : 0));
}

void TapeBytesWriter::real(double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  for (unsigned shift = 0; shift < kBitsOfWord; shift += kBitsOfByte)
    byte(static_cast<std::uint8_t>(bits >> shift));
}

void TapeBytesWriter::text(std::string_view value) {
  number(value.size());
  bytes_ += value;
}

std::string TapeBytesWriter::take() {
  return std::exchange(bytes_, {});
}

std::uint8_t TapeBytesReader::byte() {
  const std::string_view taken = take(1);
  return taken.empty() ? std::uint8_t{0} : static_cast<std::uint8_t>(taken.front());
}

std::uint64_t TapeBytesReader::number() {
  std::uint64_t value = 0;
  for (unsigned shift = 0; shift < kBitsOfWord; shift += kBitsOfNumber) {
    const std::uint8_t next = byte();
    value |= static_cast<std::uint64_t>(next & ~kMore) << shift;
    if ((next & kMore) == 0) return isBroken_ ? 0 : value;
  }
  breakOff();
  return 0;
}

std::int64_t TapeBytesReader::signedNumber() {
  const std::uint64_t bits = number();
  return static_cast<std::int64_t>((bits >> 1U) ^ ((bits & 1U) != 0 ? ~std::uint64_t{0} : 0));
}

double TapeBytesReader::real() {
  std::uint64_t bits = 0;
  for (unsigned shift = 0; shift < kBitsOfWord; shift += kBitsOfByte)
    bits |= static_cast<std::uint64_t>(byte()) << shift;
  return isBroken_ ? 0 : std::bit_cast<double>(bits);
}

std::string_view TapeBytesReader::text() {
  const std::uint64_t length = numberUpTo(bytes_.size());
  return take(length);
}

std::uint64_t TapeBytesReader::numberUpTo(std::uint64_t most) {
  const std::uint64_t value = number();
  if (value <= most) return value;
  breakOff();
  return 0;
}

void TapeBytesReader::breakOff() {
  isBroken_ = true;
  bytes_ = {};
}

std::string_view TapeBytesReader::take(std::size_t length) {
  if (length > bytes_.size()) {
    breakOff();
    return {};
  }
  const std::string_view taken = bytes_.substr(0, length);
  bytes_.remove_prefix(length);
  return taken;
}

}  // namespace staylit
