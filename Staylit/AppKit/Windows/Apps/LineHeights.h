#pragma once

#import <Foundation/Foundation.h>

#include <map>
#include <tuple>

#include "Staylit/AppsLines.h"

namespace staylit {

/// The heights of the lines of the Choose Apps window. Each shape of line is measured once. Main
/// thread only.
class LineHeights {
 public:
  /// In points.
  CGFloat of(const AppsLine& line);

 private:
  /// What the height of a line depends on: its kind, whether it has a detail, and, for a text that
  /// may be broken into several lines, which text it is.
  using Shape = std::tuple<AppsLine::Kind, bool, std::size_t>;

  static Shape shapeOf(const AppsLine& line);

  std::map<Shape, CGFloat> heights_;
};

}  // namespace staylit
