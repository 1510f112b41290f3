#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace staylit {

/// The drawings are in `Packaging/symbols`, under their system symbol names. In an icon theme a dot
/// may be taken for the beginning of a file's extension. So "cup.and.saucer" is called
/// "staylit-cup-and-saucer-symbolic" there, and its dimmed form
/// "staylit-cup-and-saucer-dimmed-symbolic".
inline std::string iconName(std::string_view symbol, bool isDimmed) {
  std::string name(symbol);
  std::ranges::replace(name, '.', '-');
  return "staylit-" + name + (isDimmed ? "-dimmed-symbolic" : "-symbolic");
}

}  // namespace staylit
