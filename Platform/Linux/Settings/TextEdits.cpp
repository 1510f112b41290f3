#include "Platform/Linux/Settings/TextEdits.h"

#include <algorithm>

namespace platform {

std::size_t nextLine(std::string_view text, std::size_t offset) {
  const std::size_t end = text.find('\n', offset);
  return end == std::string_view::npos ? text.size() : end + 1;
}

std::string_view lineEnd(std::string_view text) {
  const std::size_t first = text.find('\n');
  const bool isCrLf = first != std::string_view::npos && first > 0 && text[first - 1] == '\r';
  return isCrLf ? "\r\n" : "\n";
}

TextOffsets::TextOffsets(std::string_view text) : text_(text) {
  const std::size_t top = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
  for (std::size_t line = top; line < text.size(); line = nextLine(text, line))
    lines_.push_back(line);
}

std::size_t TextOffsets::of(std::size_t line, std::size_t column) {
  if (line == 0 || line > lines_.size()) return text_.size();
  // A long list may have all members in one line, so the search goes on from the last position.
  if (line != line_ || column < column_) {
    line_ = line;
    column_ = 1;
    offset_ = lines_[line - 1];
  }
  for (; column_ < column && offset_ < text_.size(); ++column_)
    offset_ = afterCharacter(offset_);
  return offset_;
}

std::size_t TextOffsets::afterCharacter(std::size_t at) const {
  const auto isContinuation = [this](std::size_t byte) {
    return byte < text_.size() && (static_cast<unsigned char>(text_[byte]) & 0xC0U) == 0x80U;
  };
  do
    ++at;
  while (isContinuation(at));
  return at;
}

std::string withEdits(std::string_view text, std::vector<TextEdit> edits) {
  std::ranges::stable_sort(edits, {}, &TextEdit::begin);
  std::string edited;
  std::size_t at = 0;
  for (const TextEdit& edit : edits) {
    edited += text.substr(at, edit.begin - at);
    edited += edit.replacement;
    at = edit.end;
  }
  return edited.append(text.substr(at));
}

}  // namespace platform
