#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace tidewell {

/// Hashes owned and borrowed text alike, so that a look-up needs no copy of its key.
struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const {
    return std::hash<std::string_view>{}(text);
  }
};

/// A map with texts as keys.
template <typename Value>
using TextMap = std::unordered_map<std::string, Value, TextHash, std::equal_to<>>;

using TextSet = std::unordered_set<std::string, TextHash, std::equal_to<>>;

}  // namespace tidewell
