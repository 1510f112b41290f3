#pragma once

#include <string>
#include <string_view>

#include "Tidewell/Ports/Text.h"

namespace platform {

/// The path under which a process's program is known, from its `exe` link and its `comm`.
///
/// The link names a file such as "/usr/bin/python3.11" for what was started as `pip3` or `python3`.
/// So the name of the file is replaced by the first of these that the catalogue knows as an
/// executable: the `comm`, the first word of the `comm` ("npm run build"), the name itself, the
/// name without its version. When the catalogue knows none of them, the name stays. The kernel's
/// mark of a deleted file is cut off. The result is clean UTF-8.
std::string programPath(std::string_view exeLink, std::string_view comm, tidewell::Text& text);

/// Whether the program is a shell, or contains a shell and was started as one.
bool runsShell(std::string_view exeLink, std::string_view comm);

/// The path under which a shell that runs `script` is known: the shell's folder and `script`, which
/// is a name without a folder. The result is clean UTF-8.
std::string scriptPath(std::string_view exeLink, std::string_view script);

}  // namespace platform
