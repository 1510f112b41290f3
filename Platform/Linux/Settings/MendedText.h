#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Linux/Settings/TomlLibrary.h"
#include "Platform/Linux/Settings/TomlStatements.h"

namespace platform {

/// A TOML text in which blanks replace every statement that cannot be read. The rest keeps its
/// offsets.
class MendedText {
 public:
  explicit MendedText(std::string_view text);

  [[nodiscard]] const std::string& text() const { return text_; }
  [[nodiscard]] const toml::table& table() const { return table_; }
  /// What is wrong with the text; empty when nothing is.
  [[nodiscard]] const std::string& damage() const { return damage_; }
  [[nodiscard]] const std::vector<TomlStatement>& unread() const { return unread_; }

 private:
  using Kind = TomlStatement::Kind;

  void blankTheUnreadable();
  void blankWhatIsUnreadableAlone();
  std::optional<std::size_t> readAll();
  void blankLine(std::size_t line);
  void blankTables();
  void blankAll();
  [[nodiscard]] std::string_view part(const TomlStatement& statement) const;
  void blank(TomlStatement& statement);

  std::string text_;
  toml::table table_;
  std::string damage_;
  std::vector<TomlStatement> statements_;
  std::vector<TomlStatement> unread_;
};

}  // namespace platform
