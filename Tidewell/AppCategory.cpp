#include "Tidewell/AppCategory.h"

#include <cstddef>

namespace tidewell {
namespace {

struct Texts {
  std::string_view rawValue;
  std::string_view symbol;
};

constexpr std::array<Texts, kAllAppCategories.size()> kTexts = {{
    {"Video & Audio", "film"},
    {"Downloads", "arrow.down.circle"},
    {"AI Agents", "sparkles"},
    {"Development", "hammer"},
    {"Sync & Backup", "arrow.triangle.2.circlepath"},
    {"Other", "app.dashed"},
}};

const Texts& texts(AppCategory category) {
  return kTexts[static_cast<std::size_t>(category)];
}

}  // namespace

std::string_view rawValue(AppCategory category) {
  return texts(category).rawValue;
}

std::string_view symbol(AppCategory category) {
  return texts(category).symbol;
}

std::optional<AppCategory> appCategoryFromRawValue(std::string_view raw) {
  for (AppCategory category : kAllAppCategories) {
    if (rawValue(category) == raw) return category;
  }
  return std::nullopt;
}

}  // namespace tidewell
