#include "Platform/Linux/Settings/TomlValues.h"

#include <locale>
#include <sstream>
#include <utility>
#include <variant>
#include <vector>

#include "Platform/Linux/Settings/TomlLiteral.h"

namespace platform {
namespace {

tidewell::PropertyValue listOf(const toml::array& array) {
  std::vector<std::string> list;
  for (const toml::node& member : array) {
    if (!member.is_string()) return std::monostate();
    list.push_back(member.as_string()->get());
  }
  return list;
}

std::string literalOf(const toml::node& node);

std::string literalOf(const toml::table& table) {
  std::string literal;
  for (const auto& [key, node] : table) {
    literal += (literal.empty() ? "" : ", ") + tomlKey(key.str()) + " = " + literalOf(node);
  }
  return "{" + literal + "}";
}

std::string literalOf(const toml::array& array) {
  std::string literal;
  for (const toml::node& member : array)
    literal += literalOf(member) + ", ";
  return "[" + literal + "]";
}

std::string literalOf(const toml::node& node) {
  if (const toml::table* table = node.as_table()) return literalOf(*table);
  if (const toml::array* array = node.as_array()) return literalOf(*array);
  std::ostringstream date;
  date.imbue(std::locale::classic());
  if (const auto* value = node.as_date()) date << value->get();
  if (const auto* value = node.as_time()) date << value->get();
  if (const auto* value = node.as_date_time()) date << value->get();
  return date.str().empty() ? tomlLiteral(valueOf(node)) : date.str();
}

}  // namespace

std::optional<toml::table> parsed(std::string_view text) {
  toml::parse_result result = toml::parse(text);
  return result ? std::optional(std::move(result).table()) : std::nullopt;
}

tidewell::PropertyValue valueOf(const toml::node& node) {
  if (const auto* boolean = node.as_boolean()) return boolean->get();
  if (const auto* integer = node.as_integer()) return integer->get();
  if (const auto* real = node.as_floating_point()) return real->get();
  if (const auto* text = node.as_string()) return text->get();
  if (const auto* array = node.as_array()) return listOf(*array);
  return std::monostate();
}

std::string canonical(const toml::table& table) {
  std::string text;
  for (const auto& [key, node] : table)
    text += tomlKey(key.str()) + " = " + literalOf(node) + "\n";
  return text;
}

std::string formatted(const toml::table& table) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream << table << '\n';
  return stream.str();
}

bool hasOnePlace(const toml::node& node) {
  const toml::table* table = node.as_table();
  return table == nullptr ? !node.is_array_of_tables() : table->is_inline();
}

}  // namespace platform
