#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace platform {

/// A piece of a TOML text that can be read by itself. It consists of whole lines with their line
/// ends.
struct TomlStatement {
  enum class Kind { comment, header, value };

  Kind kind;
  std::size_t begin;
  std::size_t end;
  std::size_t line;  ///< The number of its first line, counted from 1.
  /// Where the key of a value ends; equal to `begin` when there seems to be no key.
  std::size_t key;
};

/// All statements of `text` in their order. Every line that is not blank belongs to one of them. In
/// a sound text each statement is sound. In a damaged text, a list or text that is never closed
/// ends where the next statement seems to begin, so that the damage does not spread. The time is
/// proportional to the length of `text`.
[[nodiscard]] std::vector<TomlStatement> tomlStatements(std::string_view text);

}  // namespace platform
