#pragma once

#include <string>
#include <string_view>

namespace platform {

/// The catalogue's identifier for the desktop application with the id `desktopId`.
///
/// The catalogue has one identifier for a product on all systems, but each kind of Linux package
/// has an id of its own for the product. The ids of known packages give the catalogue's identifier,
/// and any other id is its own result. Upper and lower case differ, as in file names.
[[nodiscard]] std::string bundleIdentifierOf(std::string_view desktopId);

}  // namespace platform
