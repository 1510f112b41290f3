#include <vector>

#include "Platform/Linux/Settings/SettingsExamination.h"
#include "Platform/Linux/Settings/SettingsText.h"
#include "Platform/Linux/Settings/TomlStatements.h"
#include "Tests/Fuzz/Fuzzer.h"

namespace {

using platform::parseSettings;
using platform::SettingsValues;
using tidewell::PropertyDictionary;
using tidewell::PropertyValue;

/// A "nan" is not equal to itself.
bool isSame(const PropertyValue& left, const PropertyValue& right) {
  const auto* real = std::get_if<double>(&left);
  const auto* other = std::get_if<double>(&right);
  const bool areBothNan = real != nullptr && other != nullptr && *real != *real && *other != *other;
  return left == right || areBothNan;
}

bool isSame(const PropertyDictionary& left, const PropertyDictionary& right) {
  if (left.size() != right.size()) return false;
  for (const auto& [key, value] : left) {
    const auto found = right.find(key);
    if (found == right.end() || !isSame(value, found->second)) return false;
  }
  return true;
}

/// A change of one key of a sound file must succeed, carry the value, and harm no other.
void checkChange(std::string_view text, const PropertyDictionary& values, const std::string& key,
                 const PropertyValue& value) {
  const auto changed = platform::withSettings(text, {{key, value}});
  fuzz::require(changed.has_value());
  const SettingsValues after = parseSettings(*changed);
  fuzz::require(after.damage.empty());
  PropertyDictionary wanted = values;
  wanted.insert_or_assign(key, value);
  fuzz::require(isSame(after.values, wanted));
}

/// Of a damaged file the change must keep all that could be read, and add no damage. It may fail.
void checkDamagedChange(std::string_view text, const SettingsValues& settings,
                        const std::string& key) {
  const auto changed = platform::withSettings(text, {{key, true}});
  if (!changed) return;
  PropertyDictionary wanted = settings.values;
  wanted.insert_or_assign(key, true);
  fuzz::require(isSame(parseSettings(*changed).values, wanted));
}

/// Each statement of a sound text is sound by itself, and a line of damage below them hides none.
void checkStatements(std::string_view text, const PropertyDictionary& values) {
  for (const platform::TomlStatement& statement : platform::tomlStatements(text)) {
    const std::string_view alone = text.substr(statement.begin, statement.end - statement.begin);
    fuzz::require(parseSettings(alone).damage.empty());
  }
  const SettingsValues above = parseSettings(std::string(text) + "\n=");
  fuzz::require(!above.damage.empty());
  fuzz::require(isSame(above.values, values));
}

/// What is damaged is named, and nothing is named that is not there.
void checkExamination(std::string_view text, const SettingsValues& settings) {
  const auto asItIs = [](auto, const auto&) { return tidewell::SettingMeaning(); };
  const auto problems =
      platform::examineSettings(text, {{"a", true}, {"history.enabled", true}}, asItIs);
  const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
  for (const platform::SettingsProblem& problem : problems)
    fuzz::require(problem.line >= 1 && problem.line <= lines);
  if (!settings.damage.empty()) fuzz::require(!problems.empty());
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = fuzz::textOf(data, size);
  const SettingsValues settings = parseSettings(text);
  checkExamination(text, settings);
  if (!settings.damage.empty()) {
    checkDamagedChange(text, settings, "a new key");
    if (!settings.values.empty())
      checkDamagedChange(text, settings, settings.values.begin()->first);
    return 0;
  }
  checkStatements(text, settings.values);
  checkChange(text, settings.values, "a new key", std::vector<std::string>{"a\"\n", ""});
  if (settings.values.empty()) return 0;
  checkChange(text, settings.values, settings.values.begin()->first, 12.5);
  checkChange(text, settings.values, settings.values.rbegin()->first,
              std::vector<std::string>(9, "com.example.application"));
  for (const auto& [key, value] : settings.values) {
    const auto* list = std::get_if<std::vector<std::string>>(&value);
    if (list == nullptr || list->empty()) continue;
    std::vector<std::string> other = *list;
    other.erase(other.begin());
    other.emplace_back("zzz");
    checkChange(text, settings.values, key, other);
  }
  return 0;
}
