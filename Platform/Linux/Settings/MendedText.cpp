#include "Platform/Linux/Settings/MendedText.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <set>
#include <utility>

#include "Platform/Linux/Settings/TomlValues.h"
#include "Tidewell/ForeignText.h"

namespace platform {
namespace {

constexpr int kMostDisagreements = 8;

std::string describe(const toml::parse_error& error) {
  return "line " + std::to_string(error.source().begin.line) + ": " +
         tidewell::cleaned(error.description());
}

}  // namespace

MendedText::MendedText(std::string_view text) : text_(text) {
  toml::parse_result result = toml::parse(text_);
  if (result) {
    table_ = std::move(result).table();
    return;
  }
  damage_ = describe(result.error());
  blankTheUnreadable();
  if (unread_.size() > 1) damage_ += ", and " + std::to_string(unread_.size() - 1) + " more";
}

void MendedText::blankTheUnreadable() {
  statements_ = tomlStatements(text_);
  blankWhatIsUnreadableAlone();
  // A sound statement may still contradict an earlier one, for example with a table that was
  // there before.
  for (int attempt = 0; attempt < kMostDisagreements; ++attempt) {
    if (const auto line = readAll())
      blankLine(*line);
    else
      return;
  }
  blankTables();
  if (readAll()) blankAll();
}

/// Everything below a header that cannot be read belongs to an unknown table.
void MendedText::blankWhatIsUnreadableAlone() {
  std::set<std::string, std::less<>> keys;
  bool isInTable = false;
  bool isInUnknownTable = false;
  for (TomlStatement& statement : statements_) {
    const std::optional<toml::table> alone = parsed(part(statement));
    const bool isHeader = statement.kind == Kind::header;
    const bool isUnknown = isInUnknownTable && !isHeader && statement.kind != Kind::comment;
    if (isHeader) isInUnknownTable = !alone;
    isInTable = isInTable || isHeader;
    const bool isSecond = alone && !isInTable && alone->size() == 1 &&
                          hasOnePlace(alone->begin()->second) &&
                          !keys.emplace(alone->begin()->first.str()).second;
    if (!alone || isUnknown || isSecond) blank(statement);
  }
}

/// Reads the text into `table_`. Returns the line at which reading stopped; nothing when everything
/// was read.
std::optional<std::size_t> MendedText::readAll() {
  toml::parse_result result = toml::parse(text_);
  if (!result) return result.error().source().begin.line;
  table_ = std::move(result).table();
  return std::nullopt;
}

void MendedText::blankLine(std::size_t line) {
  const auto next = std::ranges::upper_bound(statements_, line, {}, &TomlStatement::line);
  if (next == statements_.begin()) return;
  auto statement = std::prev(next);
  const bool isHeader = statement->kind == Kind::header;
  blank(*statement);
  while (isHeader && ++statement != statements_.end() && statement->kind != Kind::header)
    blank(*statement);
}

/// Settings are never in tables, so tables are not needed.
void MendedText::blankTables() {
  bool isInTable = false;
  for (TomlStatement& statement : statements_) {
    isInTable = isInTable || statement.kind == Kind::header;
    const std::optional<toml::table> alone = parsed(part(statement));
    const bool isTable = alone && !alone->empty() && !hasOnePlace(alone->begin()->second);
    if (isInTable || isTable) blank(statement);
  }
}

void MendedText::blankAll() {
  for (TomlStatement& statement : statements_)
    blank(statement);
  readAll();
}

std::string_view MendedText::part(const TomlStatement& statement) const {
  return std::string_view(text_).substr(statement.begin, statement.end - statement.begin);
}

void MendedText::blank(TomlStatement& statement) {
  const auto begin = text_.begin() + static_cast<std::ptrdiff_t>(statement.begin);
  const auto end = text_.begin() + static_cast<std::ptrdiff_t>(statement.end);
  if (std::all_of(begin, end, [](char c) { return c == ' ' || c == '\n'; })) return;
  std::replace_if(
      begin, end, [](char c) { return c != '\n'; }, ' ');
  unread_.push_back(statement);
}

}  // namespace platform
