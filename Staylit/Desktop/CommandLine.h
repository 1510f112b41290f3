#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Staylit/Desktop/Session/ApplicationService.h"

namespace staylit {

/// What the program's options ask for, except "--diagnose", which goes before all others. Arguments
/// that are not options are skipped.
class CommandLine {
 public:
  /// `arguments` are all arguments of the process.
  explicit CommandLine(const std::vector<std::string>& arguments) : arguments_(arguments) {}

  /// The text that answers "--help" or "--version"; absent where the program is to do its work.
  [[nodiscard]] std::optional<std::string> information() const;

  /// What this start asks of the program, should it already run in the session.
  [[nodiscard]] ApplicationService::Request request() const;

 private:
  [[nodiscard]] bool has(const char* option) const;

  const std::vector<std::string>& arguments_;
};

}  // namespace staylit
