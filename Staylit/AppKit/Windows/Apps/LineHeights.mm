#include "Staylit/AppKit/Windows/Apps/LineHeights.h"

#import "Staylit/AppKit/Windows/Apps/StaylitLineCell.h"

namespace staylit {

LineHeights::Shape LineHeights::shapeOf(const AppsLine& line) {
  const bool isBroken = line.kind == AppsLine::Kind::empty;
  return {line.kind, line.detail.empty(), isBroken ? line.section : 0};
}

CGFloat LineHeights::of(const AppsLine& line) {
  const auto [height, isNew] = heights_.try_emplace(shapeOf(line), 0);
  if (isNew) {
    StaylitLineCell* sample = [StaylitLineCell cellForKind:line.kind];
    [sample show:line];
    height->second = sample.fittingSize.height;
  }
  return height->second;
}

}  // namespace staylit
