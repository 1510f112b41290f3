#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// The beginning of the line that follows the line with `offset`.
[[nodiscard]] std::size_t nextLine(std::string_view text, std::size_t offset);

/// The line end of the first line of `text`: "\n" or "\r\n".
[[nodiscard]] std::string_view lineEnd(std::string_view text);

/// Converts the lines and columns of a text to offsets. Lines and columns begin at 1. Columns count
/// code points, without a byte order mark. Asking for positions in ascending order is quick. The
/// text must outlive the object.
class TextOffsets {
 public:
  explicit TextOffsets(std::string_view text);

  /// The offset in bytes. A position after the end of the text gives the end.
  std::size_t of(std::size_t line, std::size_t column);

 private:
  [[nodiscard]] std::size_t afterCharacter(std::size_t at) const;

  std::string_view text_;
  std::vector<std::size_t> lines_;
  std::size_t line_ = 0;  ///< The position of the last call.
  std::size_t column_ = 0;
  std::size_t offset_ = 0;
};

/// A part of a text, by its offsets, and the text that replaces it.
struct TextEdit {
  std::size_t begin;
  std::size_t end;
  std::string replacement;
};

/// The edits may not overlap. Edits at the same place keep their order.
[[nodiscard]] std::string withEdits(std::string_view text, std::vector<TextEdit> edits);

}  // namespace platform
