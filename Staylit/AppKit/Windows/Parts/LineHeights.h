#pragma once

#import <Foundation/Foundation.h>

#include <map>
#include <tuple>

#include "Staylit/AppsLines.h"

namespace staylit {

/// How high the lines of the Choose Apps window are; measured once for each shape of line. Main
/// thread only.
class LineHeights {
 public:
  /// In points.
  CGFloat of(const AppsLine& line);

 private:
  /// What the height of a line depends on: its kind, whether it has a detail, and for a text that
  /// may be broken into lines, which one it is.
  using Shape = std::tuple<AppsLine::Kind, bool, std::size_t>;

  static Shape shapeOf(const AppsLine& line);

  std::map<Shape, CGFloat> heights_;
};

}  // namespace staylit
