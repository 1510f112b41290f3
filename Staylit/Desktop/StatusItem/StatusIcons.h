#pragma once

#include <string>

namespace staylit {

/// Where hosts find the status symbols by name.
struct StatusIcons {
  bool areThere = false;  ///< False: there are only the pixmaps.
  /// The folder of an icon theme; empty where the desktop's own themes have the icons.
  std::string folder;

  /// The icons that were installed or built with this program. Hosts do best with icons in the
  /// desktop's own themes: some hosts do not colour icons from a folder that a program names.
  static StatusIcons ofThisProgram();
};

}  // namespace staylit
