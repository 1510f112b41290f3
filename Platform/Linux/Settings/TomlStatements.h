#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace platform {

/// A piece of a TOML text that can be judged alone: whole lines, with the line end of the last.
struct TomlStatement {
  enum class Kind { comment, header, value };

  Kind kind;
  std::size_t begin;
  std::size_t end;
  std::size_t line;  ///< Of its beginning, counted from 1.
  std::size_t key;   ///< Where the key of a value ends; `begin` where none is to be seen.
};

/// All statements of `text` in their order; every line that is not blank belongs to one. Of a sound
/// text each is sound. In a damaged one a list or text that is never closed ends where the next
/// statement seems to begin, so that damage stays where it is. Takes time in proportion to `text`.
[[nodiscard]] std::vector<TomlStatement> tomlStatements(std::string_view text);

}  // namespace platform
