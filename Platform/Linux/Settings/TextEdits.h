#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// The beginning of the line after the one that `offset` is in.
[[nodiscard]] std::size_t nextLine(std::string_view text, std::size_t offset);

/// How the lines of `text` end, by its first: with "\n" or "\r\n".
[[nodiscard]] std::string_view lineEnd(std::string_view text);

/// Finds lines and columns in a text, both counted from 1: columns in code points, a byte order
/// mark in none. Quick for positions that follow each other. The text must outlive it.
class TextOffsets {
 public:
  explicit TextOffsets(std::string_view text);

  /// The offset in bytes; the end of the text for what lies behind it.
  std::size_t of(std::size_t line, std::size_t column);

 private:
  [[nodiscard]] std::size_t afterCharacter(std::size_t at) const;

  std::string_view text_;
  std::vector<std::size_t> lines_;
  std::size_t line_ = 0;  ///< The position that was asked for last.
  std::size_t column_ = 0;
  std::size_t offset_ = 0;
};

/// A part of a text, by offsets, and what is to stand in its place.
struct TextEdit {
  std::size_t begin;
  std::size_t end;
  std::string replacement;
};

/// The edits may not overlap; those of one place keep their order.
[[nodiscard]] std::string withEdits(std::string_view text, std::vector<TextEdit> edits);

}  // namespace platform
