#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Staylit/Desktop/Session/ApplicationService.h"

namespace staylit {

/// What the options of the program ask for, other than "--diagnose", which goes before them all.
/// Whatever is not an option is passed over.
class CommandLine {
 public:
  /// `arguments` are all of the process's own.
  explicit CommandLine(const std::vector<std::string>& arguments) : arguments_(arguments) {}

  /// The answer to "--help" or "--version"; absent where the program is to do its work.
  [[nodiscard]] std::optional<std::string> information() const;

  /// What this start is for, should the program run in the session already.
  [[nodiscard]] ApplicationService::Request request() const;

 private:
  [[nodiscard]] bool has(const char* option) const;

  const std::vector<std::string>& arguments_;
};

}  // namespace staylit
