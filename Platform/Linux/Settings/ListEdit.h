#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// A text in a TOML list, and the place of its literal.
struct ListMember {
  std::size_t begin;
  std::size_t end;
  std::string text;
};

/// Edits `list`, which reaches from its first bracket to its last: drops the members that are not
/// `wanted`, adds the new ones, and keeps the comments of the others. `members` must not be empty.
/// The result is right only when `list` has the order of `wanted`, so the caller has to check it.
[[nodiscard]] std::string withMembers(std::string_view list, const std::vector<ListMember>& members,
                                      const std::vector<std::string>& wanted);

}  // namespace platform
