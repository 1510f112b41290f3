#pragma once

#include <string_view>

namespace platform {

/// Whether this process may read the counters, the program and the descriptors of every user's
/// processes. Root may, unless it has lost its rights; others need two capabilities: one to pass
/// the modes of the files (CAP_DAC_READ_SEARCH), one to look into a process (CAP_SYS_PTRACE). False
/// where it cannot be found out.
[[nodiscard]] bool mayReadAllProcesses();

/// The same from the text of a process's `status` file.
[[nodiscard]] bool mayReadAllProcesses(std::string_view status);

}  // namespace platform
