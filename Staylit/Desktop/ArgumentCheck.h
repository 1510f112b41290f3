#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace staylit {

/// Says why nothing can be done with the arguments of the process, `arguments[0]` being the
/// program's name, and what may be meant: one or two lines for the terminal. Absent when all can be
/// done. "--diagnose" is not looked for: with it no other argument means anything.
[[nodiscard]] std::optional<std::string> complaintAbout(const std::vector<std::string>& arguments);

/// Whether the argument is one that must not ask for the report, and yet is almost "--diagnose": it
/// goes on after that, has one dash, or other letters are capital.
[[nodiscard]] bool isAlmostDiagnose(std::string_view argument);

}  // namespace staylit
