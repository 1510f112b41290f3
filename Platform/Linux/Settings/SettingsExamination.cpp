#include "Platform/Linux/Settings/SettingsExamination.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <variant>

#include "Platform/Linux/Settings/MendedText.h"
#include "Platform/Linux/Settings/SettingsTables.h"
#include "Platform/Linux/Settings/TomlLibrary.h"
#include "Platform/Linux/Settings/TomlValues.h"
#include "Tidewell/ForeignText.h"

namespace platform {
namespace {

using tidewell::PropertyValue;

bool isNumber(const PropertyValue& value) {
  return std::holds_alternative<std::int64_t>(value) || std::holds_alternative<double>(value);
}

/// What a setting wants; null when `value` is of the kind of `wanted`.
const char* missedKind(const PropertyValue& wanted, const toml::node& node) {
  if (std::holds_alternative<std::monostate>(wanted)) return node.is_table() ? nullptr : "a table";
  const PropertyValue value = valueOf(node);
  if (isNumber(wanted)) return isNumber(value) ? nullptr : "a number";
  if (wanted.index() == value.index()) return nullptr;
  if (std::holds_alternative<bool>(wanted)) return "true or false";
  if (std::holds_alternative<std::vector<std::string>>(wanted)) return "a list of texts";
  return "a text";
}

bool isSameButForCase(std::string_view left, std::string_view right) {
  return std::ranges::equal(left, right, [](unsigned char first, unsigned char second) {
    return std::tolower(first) == std::tolower(second);
  });
}

std::string describeUnknown(std::string_view key, const tidewell::PropertyDictionary& known) {
  std::string text =
      "nobody knows the key \"" + tidewell::cleaned(key, 64) + "\", and it does not count";
  for (const auto& [name, value] : known) {
    if (isSameButForCase(name, key)) return text.append("; it is written \"").append(name) + '"';
  }
  return text;
}

/// What is wrong with the value of a setting; empty when nothing is.
std::string describeValue(const std::string& key, const PropertyValue& kind, const toml::node& node,
                          const tidewell::SettingMeanings& meanings) {
  const tidewell::SettingMeaning meaning = meanings(key, valueOf(node));
  const char* missed = missedKind(kind, node);
  if (!missed && meaning.wants.empty()) return "";
  std::string text = "\"" + key + "\" wants " + (meaning.wants.empty() ? missed : meaning.wants);
  if (!meaning.counts.empty()) text += "; " + meaning.counts + " counts";
  if (!meaning.consequence.empty()) text += ", so that " + meaning.consequence;
  return text;
}

}  // namespace

std::vector<SettingsProblem> examineSettings(std::string_view text,
                                             const tidewell::PropertyDictionary& known,
                                             const tidewell::SettingMeanings& meanings) {
  const MendedText mended(text);
  std::vector<SettingsProblem> problems;
  const auto examineKey = [&](const toml::key& key, std::string_view name, const toml::node& node) {
    const std::size_t line = key.source().begin.line;
    const auto setting = known.find(name);
    const std::string problem =
        setting == known.end() ? describeUnknown(name, known)
                               : describeValue(setting->first, setting->second, node, meanings);
    if (!problem.empty()) problems.push_back({line, problem});
  };
  for (const TomlStatement& statement : mended.unread())
    problems.push_back({statement.line, "it cannot be read, and does not count"});
  for (const auto& [key, node] : mended.table()) {
    const toml::table* table = key.str() == kHistoryTable ? node.as_table() : nullptr;
    if (!table) {
      examineKey(key, key.str(), node);
      continue;
    }
    for (const auto& [inner, value] : *table)
      examineKey(inner, nameInTable(kHistoryTable, inner.str()), value);
  }
  std::ranges::sort(problems, {}, &SettingsProblem::line);
  return problems;
}

}  // namespace platform
