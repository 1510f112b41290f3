#pragma once

namespace staylit {

/// The program's version, as "0.1.0".
[[nodiscard]] const char* programVersion();

}  // namespace staylit
