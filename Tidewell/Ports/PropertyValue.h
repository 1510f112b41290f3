#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace tidewell {

/// A value out of a dictionary that somebody else fills: the platform, another program, a person
/// with an editor. `std::monostate` stands for any type that nobody here reads.
using PropertyValue =
    std::variant<std::monostate, bool, std::int64_t, double, std::string, std::vector<std::string>>;

using PropertyDictionary = std::map<std::string, PropertyValue, std::less<>>;

}  // namespace tidewell
