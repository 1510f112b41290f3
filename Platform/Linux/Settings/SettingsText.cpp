#include "Platform/Linux/Settings/SettingsText.h"

#include <algorithm>
#include <utility>
#include <variant>
#include <vector>

#include "Platform/Linux/Settings/ListEdit.h"
#include "Platform/Linux/Settings/MendedText.h"
#include "Platform/Linux/Settings/SettingsTables.h"
#include "Platform/Linux/Settings/TextEdits.h"
#include "Platform/Linux/Settings/TomlLibrary.h"
#include "Platform/Linux/Settings/TomlLiteral.h"
#include "Platform/Linux/Settings/TomlStatements.h"
#include "Platform/Linux/Settings/TomlValues.h"

namespace platform {
namespace {

/// Compares the values as texts, because only as texts two "nan" are equal.
bool says(const std::string& text, const std::string& wanted) {
  return canonical(MendedText(text).table()) == wanted;
}

/// Finds the edits that bring changes into a text and leave the rest as it stands.
class Editor {
 public:
  /// One of the ways to make the changes. `kWays` begins with the most careful one.
  struct Way {
    int placeOfLines;  ///< Where new keys go: see `placesForLine`.
    bool keepsLists;   ///< Whether comments within lists stay.
  };

  Editor(std::string_view original, const MendedText& mended)
      : original_(original), mended_(mended), offsets_(mended.text()) {}

  std::string edited(const tidewell::PropertyDictionary& changes, Way way) {
    std::vector<TextEdit> edits;
    std::string lines;
    for (const auto& [key, value] : changes) {
      const std::string literal = literalFor(value);
      if (const toml::node* node = mended_.table().get(key)) {
        if (hasOnePlace(*node)) edits.push_back(editOf(*node, value, literal, way));
        continue;
      }
      disable(key, edits);
      lines += tomlKey(key) + " = " + literal;
      lines += lineEnd(original_);
    }
    if (!lines.empty()) edits.push_back(insertion(placeForLine(way.placeOfLines), lines));
    return withEdits(original_, std::move(edits));
  }

  /// The literal, with the line ends of the text.
  [[nodiscard]] std::string literalFor(const tidewell::PropertyValue& value) const {
    std::string literal = tomlLiteral(value);
    if (lineEnd(original_) == "\n") return literal;
    for (std::size_t at = 0; (at = literal.find('\n', at)) != std::string::npos; at += 2)
      literal.insert(at, 1, '\r');
    return literal;
  }

  static constexpr Way kWays[] = {{0, true},  {1, true},  {2, true},
                                  {0, false}, {1, false}, {2, false}};

 private:
  TextEdit editOf(const toml::node& node, const tidewell::PropertyValue& value,
                  const std::string& literal, Way way) {
    const std::size_t begin = offsetOf(node.source().begin);
    const std::size_t end = std::max(begin, offsetOf(node.source().end));
    if (way.keepsLists) {
      if (auto list = editedList(node, begin, end, value)) return {begin, end, std::move(*list)};
    }
    return {begin, end, literal};
  }

  std::size_t offsetOf(toml::source_position position) {
    return offsets_.of(position.line, position.column);
  }

  /// The edited list with its comments. Absent for a list without comments.
  std::optional<std::string> editedList(const toml::node& node, std::size_t begin, std::size_t end,
                                        const tidewell::PropertyValue& value) {
    const auto* wanted = std::get_if<std::vector<std::string>>(&value);
    const toml::array* array = node.as_array();
    if (!wanted || !array || array->empty() || !array->is_homogeneous<std::string>()) return {};
    const std::string_view list = original_.substr(begin, end - begin);
    if (list.find('#') == std::string_view::npos) return {};
    std::vector<ListMember> members;
    for (const toml::node& member : *array) {
      const std::size_t from = offsetOf(member.source().begin) - begin;
      const std::size_t to = offsetOf(member.source().end) - begin;
      members.push_back({from, to, **member.as_string()});
    }
    return withMembers(list, members, *wanted);
  }

  /// Makes each damaged line of `key` a comment. This keeps the user's text, and leaves only one
  /// line with the key.
  void disable(const std::string& key, std::vector<TextEdit>& edits) const {
    for (const TomlStatement& statement : mended_.unread()) {
      const std::size_t length = statement.key - statement.begin;
      if (length == 0) continue;
      const auto alone = parsed(std::string(original_.substr(statement.begin, length)) + "=0");
      if (!alone || alone->size() != 1 || alone->begin()->first.str() != key) continue;
      for (std::size_t line = statement.begin; line < statement.end;
           line = nextLine(original_, line))
        edits.push_back({line, line, "# "});
    }
  }

  /// After the last of the top-level values, else before the first header, else at the top of the
  /// text.
  std::size_t placeForLine(int choice) {
    const std::string_view text = mended_.text();
    const std::size_t top = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    if (choice == 0) {
      const auto last = lastEnd();
      if (last) return nextLine(text, offsetOf(*last));
    }
    if (choice == 2) return top;
    std::size_t line = top;
    const auto isHeader = [&text](std::size_t at) {
      const std::size_t first = text.find_first_not_of(" \t", at);
      return first != std::string_view::npos && text[first] == '[';
    };
    while (line < text.size() && !isHeader(line))
      line = nextLine(text, line);
    return line;
  }

  [[nodiscard]] std::optional<toml::source_position> lastEnd() const {
    std::optional<toml::source_position> last;
    for (const auto& [key, node] : mended_.table()) {
      if (hasOnePlace(node) && (!last || *last < node.source().end)) last = node.source().end;
    }
    return last;
  }

  [[nodiscard]] TextEdit insertion(std::size_t offset, std::string lines) const {
    const std::string_view before = original_.substr(0, offset);
    const bool isAfterOpenLine = offset > 0 && before.back() != '\n' && before != kByteOrderMark;
    if (isAfterOpenLine) lines.insert(0, lineEnd(original_));
    return {offset, offset, std::move(lines)};
  }

  std::string_view original_;
  const MendedText& mended_;
  TextOffsets offsets_;
};

/// `changes` under the keys as a file has them; absent when one of the changes has no type.
std::optional<tidewell::PropertyDictionary> writable(const tidewell::PropertyDictionary& changes) {
  tidewell::PropertyDictionary result;
  for (const auto& [key, value] : changes) {
    const std::string literal = tomlLiteral(value);
    const std::optional<toml::table> line = parsed(tomlKey(key) + " = " + literal);
    if (literal.empty() || !line || line->empty()) return std::nullopt;
    result.insert_or_assign(std::string(line->begin()->first.str()), value);
  }
  return result;
}

toml::table withChanges(toml::table table, const tidewell::PropertyDictionary& changes,
                        const Editor& editor) {
  for (const auto& [key, value] : changes) {
    std::optional<toml::table> line = parsed("k = " + editor.literalFor(value));
    if (line) table.insert_or_assign(key, std::move(line->begin()->second));
  }
  return table;
}

}  // namespace

SettingsValues parseSettings(std::string_view text) {
  const MendedText mended(text);
  SettingsValues settings;
  settings.damage = mended.damage();
  for (const auto& [key, node] : mended.table())
    settings.values.insert_or_assign(std::string(key.str()), valueOf(node));
  if (const toml::table* history = mended.table().get_as<toml::table>(kHistoryTable)) {
    for (const auto& [key, node] : *history)
      settings.values.insert_or_assign(nameInTable(kHistoryTable, key.str()), valueOf(node));
  }
  return settings;
}

std::optional<std::string> withSettings(std::string_view text,
                                        const tidewell::PropertyDictionary& wantedChanges) {
  const std::optional<tidewell::PropertyDictionary> changes = writable(wantedChanges);
  if (!changes) return std::nullopt;
  const MendedText mended(text);
  Editor editor(text, mended);
  const toml::table wanted = withChanges(mended.table(), *changes, editor);
  const std::string wantedText = canonical(wanted);
  std::string former;
  for (const Editor::Way way : Editor::kWays) {
    std::string edit = editor.edited(*changes, way);
    if (edit == former) continue;
    if (says(edit, wantedText)) return edit;
    former = std::move(edit);
  }
  // A rewritten text would lose the parts that cannot be read.
  if (!mended.damage().empty()) return std::nullopt;
  // This is rare. Losing the layout is better than not changing the setting.
  for (std::string rewritten : {formatted(wanted), wantedText}) {
    if (says(rewritten, wantedText)) return rewritten;
  }
  return std::nullopt;
}

}  // namespace platform
