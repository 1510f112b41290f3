#include "Platform/Linux/Settings/TomlStatements.h"

#include <algorithm>
#include <array>

#include "Platform/Linux/Settings/TextEdits.h"
#include "Platform/Linux/Settings/TomlLiteral.h"

namespace platform {
namespace {

constexpr std::size_t kNone = std::string_view::npos;

/// Walks over the text once. It never searches again for something that it did not find.
class Splitter {
 public:
  explicit Splitter(std::string_view text) : text_(text) {}

  std::vector<TomlStatement> all() {
    std::vector<TomlStatement> statements;
    std::size_t at = text_.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    std::size_t line = 1;
    while (at < text_.size()) {
      const std::size_t first = afterBlanks(at);
      const bool isBlank = lineEnd(first) == first || text_.substr(first, 2) == "\r\n";
      TomlStatement statement = isBlank ? blank(at) : statementAt(at, first);
      statement.line = line;
      if (!isBlank) statements.push_back(statement);
      const std::string_view lines = text_.substr(at, statement.end - at);
      line += static_cast<std::size_t>(std::ranges::count(lines, '\n'));
      at = statement.end;
    }
    return statements;
  }

 private:
  using Kind = TomlStatement::Kind;

  [[nodiscard]] TomlStatement blank(std::size_t at) const {
    return {Kind::comment, at, nextLine(at), 0, at};
  }

  TomlStatement statementAt(std::size_t begin, std::size_t first) {
    if (text_[first] == '#') return {Kind::comment, begin, nextLine(begin), 0, begin};
    if (text_[first] == '[') return {Kind::header, begin, nextLine(begin), 0, begin};
    const std::size_t key = keyEnd(begin);
    if (key == kNone) return {Kind::value, begin, nextLine(begin), 0, begin};
    return {Kind::value, begin, valueEnd(begin, key + 1), 0, key};
  }

  /// The place of the "=" after the key of a line, if the line begins with a key.
  [[nodiscard]] std::size_t keyEnd(std::size_t at) const {
    for (;;) {
      at = afterBlanks(at);
      const std::size_t part = afterKeyPart(at);
      if (part == kNone || part == at) return kNone;
      at = afterBlanks(part);
      if (at >= text_.size()) return kNone;
      if (text_[at] == '=') return at;
      if (text_[at++] != '.') return kNone;
    }
  }

  [[nodiscard]] std::size_t afterKeyPart(std::size_t at) const {
    if (at < text_.size() && (text_[at] == '"' || text_[at] == '\'')) return afterShortText(at);
    while (at < text_.size() && isBareKeyCharacter(text_[at]))
      ++at;
    return at;
  }

  /// The end of the lines that a value occupies.
  std::size_t valueEnd(std::size_t begin, std::size_t at) {
    std::size_t depth = 0;
    while (at < text_.size()) {
      const char character = text_[at];
      if (character == '\n') {
        ++at;
        if (depth == 0) return at;
        if (keyEnd(at) != kNone) return withoutHeaders(begin, at);
        continue;
      }
      if (character == '#') {
        at = lineEnd(at);
        continue;
      }
      if (character == '"' || character == '\'') {
        at = afterText(at);
        if (at == kNone) return nextLine(begin);
        continue;
      }
      if (character == '[' || character == '{') ++depth;
      if ((character == ']' || character == '}') && depth > 0) --depth;
      ++at;
    }
    return depth == 0 ? at : withoutHeaders(begin, at);
  }

  /// A value that is never closed ends before the first line that may be a header.
  [[nodiscard]] std::size_t withoutHeaders(std::size_t begin, std::size_t end) const {
    for (std::size_t at = nextLine(begin); at < end; at = nextLine(at)) {
      if (isHeader(at)) return at;
    }
    return end;
  }

  [[nodiscard]] bool isHeader(std::size_t line) const {
    std::size_t at = afterBlanks(line);
    const std::string_view open = text_.substr(at, 2) == "[[" ? "[[" : "[";
    if (text_.substr(at, open.size()) != open) return false;
    at += open.size();
    do {
      const std::size_t part = afterBlanks(at);
      at = afterKeyPart(part);
      if (at == kNone || at == part) return false;
      at = afterBlanks(at);
    } while (at < text_.size() && text_[at] == '.' && ++at < text_.size());
    if (text_.substr(at, open.size()) != (open.size() == 2 ? "]]" : "]")) return false;
    const std::size_t rest = afterBlanks(at + open.size());
    return rest == lineEnd(rest) || text_[rest] == '#' || text_[rest] == '\r';
  }

  /// The place after the text whose first quote is at `at`; `kNone` when a long text is never
  /// closed.
  std::size_t afterText(std::size_t at) {
    const char quote = text_[at];
    const std::array<char, 3> three = {quote, quote, quote};
    const std::string_view mark(three.data(), three.size());
    if (text_.substr(at, 3) != mark) {
      const std::size_t end = afterShortText(at);
      return end == kNone ? lineEnd(at) : end;
    }
    bool& isUnclosed = isUnclosed_[quote == '"' ? 0 : 1];
    if (isUnclosed) return kNone;
    for (at += 3; at < text_.size(); ++at) {
      if (quote == '"' && text_[at] == '\\') {
        ++at;
        continue;
      }
      if (text_[at] != quote || text_.substr(at, 3) != mark) continue;
      // Up to two further quotes belong to the text itself.
      at += 3;
      for (int more = 0; more < 2 && at < text_.size() && text_[at] == quote; ++more)
        ++at;
      return at;
    }
    isUnclosed = true;
    return kNone;
  }

  /// The place after a text of one line; `kNone` when the text is not closed in that line.
  [[nodiscard]] std::size_t afterShortText(std::size_t at) const {
    const char quote = text_[at];
    for (++at; at < text_.size() && text_[at] != '\n'; ++at) {
      if (text_[at] == quote) return at + 1;
      if (quote == '"' && text_[at] == '\\' && at + 1 < text_.size() && text_[at + 1] != '\n') ++at;
    }
    return kNone;
  }

  [[nodiscard]] std::size_t afterBlanks(std::size_t at) const {
    return std::min(text_.find_first_not_of(" \t", at), text_.size());
  }
  [[nodiscard]] std::size_t lineEnd(std::size_t at) const {
    return std::min(text_.find('\n', at), text_.size());
  }
  [[nodiscard]] std::size_t nextLine(std::size_t at) const { return platform::nextLine(text_, at); }

  std::string_view text_;
  std::array<bool, 2> isUnclosed_{};  ///< For each quote, whether no further long text is closed.
};

}  // namespace

std::vector<TomlStatement> tomlStatements(std::string_view text) {
  return Splitter(text).all();
}

}  // namespace platform
