#pragma once

#include <string>
#include <string_view>

#include "Tidewell/Ports/Text.h"

namespace platform {

/// The path under which a process's program is known, from its `exe` link and its `comm`.
///
/// The link resolves interpreters and versions away: "/usr/bin/python3.11" runs as `pip3` or is
/// plain `python3`. So the file name gives way to the `comm` if the catalogue knows that, or its
/// first word ("npm run build"), as an executable, else to itself without its version if the
/// catalogue knows that. The " (deleted)" of a replaced file is cut off. The result is clean UTF-8.
std::string programPath(std::string_view exeLink, std::string_view comm, tidewell::Text& text);

/// Whether the program is a shell, also as a part of a program that is many.
bool runsShell(std::string_view exeLink, std::string_view comm);

/// The path of a shell that runs `script`, a name without a folder: the shell's folder and that
/// name. Clean UTF-8.
std::string scriptPath(std::string_view exeLink, std::string_view script);

}  // namespace platform
