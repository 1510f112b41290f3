#pragma once

#include <string>

namespace staylit {

/// Where hosts find the status symbols by their names.
struct StatusIcons {
  bool areThere = false;  ///< Otherwise there are only the pixmaps.
  std::string folder;     ///< An icon theme's; empty where they are in the desktop's own.

  /// Those that were installed or built with this program. Hosts do best with icons in the
  /// desktop's own themes: some do not colour those of a folder that they are shown.
  static StatusIcons ofThisProgram();
};

}  // namespace staylit
