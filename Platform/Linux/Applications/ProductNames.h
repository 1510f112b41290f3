#pragma once

#include <string>
#include <string_view>

namespace platform {

/// The bundle identifier of a desktop application.
///
/// A product of the catalogue has there, under one identifier for all systems, what every kind of
/// package here calls differently: those ids give the catalogue's. Every other id stands for
/// itself. Ids are compared exactly, as file names are.
[[nodiscard]] std::string bundleIdentifierOf(std::string_view desktopId);

}  // namespace platform
