#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Staylit/Desktop/Session/ApplicationService.h"

namespace staylit {

/// Reads what the program's options ask for, except "--diagnose", which comes before all others.
/// Arguments that are no options are skipped. `arguments` must outlive it.
class CommandLine {
 public:
  /// `arguments` are all arguments of the process.
  explicit CommandLine(const std::vector<std::string>& arguments) : arguments_(arguments) {}

  /// The program's name and version.
  static std::string version();

  /// The text that answers "--help" or "--version"; absent when the program is to do its work.
  [[nodiscard]] std::optional<std::string> information() const;

  /// What this start asks of the program, should it already run in the session.
  [[nodiscard]] ApplicationService::Request request() const;

 private:
  [[nodiscard]] bool has(const char* option) const;

  const std::vector<std::string>& arguments_;
};

}  // namespace staylit
