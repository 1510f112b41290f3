#pragma once

#include <string>
#include <string_view>

namespace staylit {

/// The name of a status symbol in an icon theme.
///
/// The drawings are in `Packaging/symbols`, under their system symbol names. In an icon theme a dot
/// may be taken for the beginning of a file's extension. So "cup.and.saucer" is called
/// "staylit-cup-and-saucer-symbolic" there, and its dimmed form
/// "staylit-cup-and-saucer-dimmed-symbolic".
std::string iconName(std::string_view symbol, bool isDimmed);

/// Where hosts find the status symbols by name.
struct StatusIcons {
  bool areThere = false;  ///< Whether there are any; without them, hosts get pixmaps.
  /// The folder of an icon theme; empty where the desktop's own themes have the icons.
  std::string folder;

  /// The icons that were installed or built with this program. Hosts do best with icons in the
  /// desktop's own themes: some hosts do not colour icons from a folder that a program names.
  static StatusIcons ofThisProgram();
};

}  // namespace staylit
