#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace staylit {

/// Writes numbers and texts into bytes, small numbers into few. `TapeBytesReader` reads them.
class TapeBytesWriter {
 public:
  void byte(std::uint8_t value) { bytes_.push_back(static_cast<char>(value)); }
  void number(std::uint64_t value);
  /// Small numbers of either sign take few bytes.
  void signedNumber(std::int64_t value);
  void real(double value);
  void text(std::string_view value);

  [[nodiscard]] const std::string& bytes() const { return bytes_; }
  [[nodiscard]] std::string take();

 private:
  std::string bytes_;
};

/// Reads bytes that anybody may have written. Once something cannot be read, `isBroken` is true and
/// everything reads as 0 or empty. `bytes` must outlive it and all texts that it gave.
class TapeBytesReader {
 public:
  TapeBytesReader() = default;
  explicit TapeBytesReader(std::string_view bytes) : bytes_(bytes) {}

  std::uint8_t byte();
  std::uint64_t number();
  std::int64_t signedNumber();
  double real();
  std::string_view text();
  /// A number that is no more than `most`.
  std::uint64_t numberUpTo(std::uint64_t most);

  /// Marks the rest as unreadable.
  void breakOff();
  [[nodiscard]] bool isBroken() const { return isBroken_; }
  [[nodiscard]] bool isAtEnd() const { return bytes_.empty(); }

 private:
  std::string_view take(std::size_t length);

  std::string_view bytes_;
  bool isBroken_ = false;
};

}  // namespace staylit
