#pragma once

#include <string_view>

namespace platform {

/// What a shell does, as its command line tells (see sh(1) and bash(1)).
struct ShellWork {
  enum class Kind {
    prompt,   ///< Takes commands from a person or a pipe.
    script,   ///< Runs a file.
    command,  ///< Runs a text that is one of its arguments ("-c").
  };

  Kind kind = Kind::prompt;
  std::string_view script;  ///< The file's name without its folder; part of `arguments`.
};

/// Whether a program file of this name is a shell, or contains a shell and was started as `comm`.
bool isShell(std::string_view file, std::string_view comm);

/// Reads what `/proc/<pid>/cmdline` holds: the arguments with a NUL after each, the program's own
/// name first. `arguments` may have any bytes, and the result refers to them.
ShellWork shellWork(std::string_view arguments);

}  // namespace platform
