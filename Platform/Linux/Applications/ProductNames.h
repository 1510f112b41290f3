#pragma once

#include <string>
#include <string_view>

namespace platform {

/// The bundle identifier of a desktop application.
///
/// The catalogue has one identifier for a product on all systems, while every kind of package here
/// calls the product differently. The ids of these packages give the catalogue's identifier. Every
/// other id stands for itself. Ids are compared exactly, as file names are.
[[nodiscard]] std::string bundleIdentifierOf(std::string_view desktopId);

}  // namespace platform
