#pragma once

#include <string_view>

namespace platform {

/// What a shell is there for, as its command line tells (sh(1), bash(1), and their like).
struct ShellWork {
  enum class Kind {
    prompt,   ///< Takes commands from a person or a pipe.
    script,   ///< Runs a file.
    command,  ///< Runs a text that whoever started it gave it ("-c").
  };

  Kind kind = Kind::prompt;
  std::string_view script;  ///< The file's name without its folder; part of `arguments`.
};

/// Whether a program file of this name is a shell.
bool isShell(std::string_view file);

/// `arguments` is what `/proc/<pid>/cmdline` holds: the arguments with a NUL after each, the
/// program's own name first. Any bytes.
ShellWork shellWork(std::string_view arguments);

}  // namespace platform
