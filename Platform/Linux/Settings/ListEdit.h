#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// A text in a TOML list, and where its literal stands.
struct ListMember {
  std::size_t begin;
  std::size_t end;
  std::string text;
};

/// `list`, from its first bracket to its last, with the members that are not `wanted` taken out and
/// the new ones put in, so that the comments of the others stay where they are. `members` is not
/// empty. Made for lists in the same order as `wanted`; the caller checks what came out.
[[nodiscard]] std::string withMembers(std::string_view list, const std::vector<ListMember>& members,
                                      const std::vector<std::string>& wanted);

}  // namespace platform
