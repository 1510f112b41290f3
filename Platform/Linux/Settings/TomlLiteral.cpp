#include "Platform/Linux/Settings/TomlLiteral.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "Tidewell/ForeignText.h"

namespace platform {
namespace {

constexpr std::size_t kLineLength = 80;

std::string escaped(char character) {
  switch (character) {
    case '"':
      return "\\\"";
    case '\\':
      return "\\\\";
    case '\n':
      return "\\n";
    case '\t':
      return "\\t";
    default:
      break;
  }
  const auto code = static_cast<unsigned char>(character);
  if (code >= 0x20 && code != 0x7F) return {character};
  char digits[8];
  std::snprintf(digits, sizeof digits, "\\u%04X", unsigned{code});
  return digits;
}

std::string quotedText(std::string_view text) {
  std::string literal = "\"";
  for (const char character : tidewell::wellFormed(text))
    literal += escaped(character);
  return literal + '"';
}

std::string realLiteral(double value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
  char digits[32];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  std::string literal(digits, end);
  if (literal.find_first_of(".e") == std::string::npos) literal += ".0";
  return literal;
}

std::string joined(const std::vector<std::string>& list, std::string_view before,
                   std::string_view between, std::string_view after) {
  if (list.empty()) return "[]";
  std::string literal = "[" + std::string(before);
  for (std::size_t index = 0; index < list.size(); ++index) {
    if (index > 0) literal += between;
    literal += quotedText(list[index]);
  }
  return literal.append(after) + "]";
}

std::string listLiteral(const std::vector<std::string>& list) {
  std::string literal = joined(list, "", ", ", "");
  return literal.size() <= kLineLength ? literal : joined(list, "\n  ", ",\n  ", ",\n");
}

}  // namespace

bool isBareKeyCharacter(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9') || character == '_' || character == '-';
}

std::string tomlKey(std::string_view key) {
  const bool isBare = !key.empty() && std::ranges::all_of(key, isBareKeyCharacter);
  return isBare ? std::string(key) : quotedText(key);
}

std::string tomlLiteral(const tidewell::PropertyValue& value) {
  if (const auto* boolean = std::get_if<bool>(&value)) return *boolean ? "true" : "false";
  if (const auto* integer = std::get_if<std::int64_t>(&value)) return std::to_string(*integer);
  if (const auto* real = std::get_if<double>(&value)) return realLiteral(*real);
  if (const auto* text = std::get_if<std::string>(&value)) return quotedText(*text);
  if (const auto* list = std::get_if<std::vector<std::string>>(&value)) return listLiteral(*list);
  return {};
}

}  // namespace platform
