#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace tidewell {

/// What kind of work an application does. The values stand in the order in which people see them.
enum class AppCategory { videoAudio, downloads, aiAgents, development, syncBackup, other };

inline constexpr std::array kAllAppCategories = {AppCategory::videoAudio, AppCategory::downloads,
                                                 AppCategory::aiAgents,   AppCategory::development,
                                                 AppCategory::syncBackup, AppCategory::other};

/// The category's text, as shown to the user and as stored.
std::string_view rawValue(AppCategory category);

/// The name of the system symbol that stands for the category.
std::string_view symbol(AppCategory category);

/// The category whose raw value is exactly `rawValue`, or absent.
std::optional<AppCategory> appCategoryFromRawValue(std::string_view rawValue);

}  // namespace tidewell
