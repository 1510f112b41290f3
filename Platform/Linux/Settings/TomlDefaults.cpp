#include "Platform/Linux/Settings/TomlDefaults.h"

#include <utility>

#include "Platform/Linux/Files/XdgFolders.h"
#include "Platform/Linux/Settings/SettingsExamination.h"
#include "Tidewell/PropertyConversion.h"

namespace platform {

using tidewell::PropertyDictionary;
using tidewell::PropertyValue;

std::filesystem::path TomlDefaults::defaultPath() {
  const std::filesystem::path folder = xdgConfigHome();
  return folder.empty() ? folder : folder / "staylit" / "settings.toml";
}

TomlDefaults::TomlDefaults(std::filesystem::path file, SettingsKeeper::Timing timing)
    : keeper_(std::move(file), timing) {}

void TomlDefaults::registerDefaults(const PropertyDictionary& defaults) {
  for (const auto& [key, value] : defaults)
    registered_.insert_or_assign(key, value);
}

std::int64_t TomlDefaults::integer(std::string_view key) {
  return tidewell::integerValue(value(key));
}

double TomlDefaults::real(std::string_view key) {
  return tidewell::realValue(value(key));
}

bool TomlDefaults::boolean(std::string_view key) {
  return tidewell::booleanValue(value(key));
}

std::optional<std::vector<std::string>> TomlDefaults::stringList(std::string_view key) {
  return tidewell::stringListValue(value(key));
}

void TomlDefaults::setInteger(std::string_view key, std::int64_t value) {
  keeper_.set(key, value);
}

void TomlDefaults::setReal(std::string_view key, double value) {
  keeper_.set(key, value);
}

void TomlDefaults::setBoolean(std::string_view key, bool value) {
  keeper_.set(key, value);
}

void TomlDefaults::setStringList(std::string_view key, const std::vector<std::string>& value) {
  keeper_.set(key, value);
}

void TomlDefaults::finishWriting() {
  keeper_.finish();
}

std::vector<std::string> TomlDefaults::takeRemarks(const tidewell::SettingMeanings& meanings) {
  const std::optional<std::string> text = keeper_.takeForeignText();
  if (!text) return {};
  std::vector<std::string> remarks;
  std::multiset<std::string> present;
  for (const SettingsProblem& problem : examineSettings(*text, registered_, meanings)) {
    present.insert(problem.text);
    // An edit elsewhere moves a line, and its problem stays the same.
    const auto told = remarked_.find(problem.text);
    if (told == remarked_.end()) {
      remarks.push_back("Settings, line " + std::to_string(problem.line) + ": " + problem.text);
    } else {
      remarked_.erase(told);
    }
  }
  remarked_ = std::move(present);
  return remarks;
}

PropertyValue TomlDefaults::value(std::string_view key) {
  if (auto value = keeper_.value(key)) return *std::move(value);
  const auto registered = registered_.find(key);
  return registered == registered_.end() ? PropertyValue() : registered->second;
}

}  // namespace platform
