#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tidewell {

/// A value out of a dictionary that somebody else fills: the platform, another program, a person
/// with an editor. `std::monostate` stands for every type that this program never reads.
using PropertyValue =
    std::variant<std::monostate, bool, std::int64_t, double, std::string, std::vector<std::string>>;
using PropertyDictionary = std::map<std::string, PropertyValue, std::less<>>;

/// The value under `key`; absent when there is none or it has another type.
template <typename Value>
[[nodiscard]] std::optional<Value> valueOf(const PropertyDictionary& dictionary,
                                           std::string_view key) {
  const auto found = dictionary.find(key);
  if (found == dictionary.end()) return std::nullopt;
  const Value* value = std::get_if<Value>(&found->second);
  return value == nullptr ? std::nullopt : std::optional<Value>(*value);
}

}  // namespace tidewell
