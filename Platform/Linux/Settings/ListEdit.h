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

/// `list`, from its first bracket to its last, without the members that are not `wanted` and with
/// the new ones, so that the comments of the other members stay where they are. `members` is not
/// empty. It is made for lists in the same order as `wanted`; the caller checks the result.
[[nodiscard]] std::string withMembers(std::string_view list, const std::vector<ListMember>& members,
                                      const std::vector<std::string>& wanted);

}  // namespace platform
