#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Staylit/Desktop/Control/ControlRequest.h"
#include "Staylit/Desktop/Session/ApplicationService.h"

namespace staylit {

/// Reads what the program's options ask for, except "--diagnose", which comes before all others:
/// with it, no other argument means anything. `arguments` must outlive it.
class CommandLine {
 public:
  /// `arguments` are all arguments of the process.
  explicit CommandLine(const std::vector<std::string>& arguments) : arguments_(arguments) {}

  /// The program's name and version.
  static std::string version();

  /// The text that answers "--help" or "--version"; absent when the program is to do its work.
  [[nodiscard]] std::optional<std::string> information() const;

  /// Why nothing can be done with these arguments, and what may be meant; absent when it can.
  [[nodiscard]] std::optional<std::string> complaint() const;

  /// What to say about an argument that is almost "--diagnose": the program starts all the same.
  [[nodiscard]] std::optional<std::string> warning() const;

  /// What the program that runs is to do; absent when this start is none of these commands.
  [[nodiscard]] std::optional<ControlRequest> control() const;

  /// What this start asks of the program, should it already run in the session.
  [[nodiscard]] ApplicationService::Request request() const;

 private:
  [[nodiscard]] bool has(const char* option) const;
  [[nodiscard]] std::string lengthOfPause() const;

  const std::vector<std::string>& arguments_;
};

}  // namespace staylit
