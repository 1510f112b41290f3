#include "Staylit/AppKit/Windows/Parts/ScrollPlace.h"

#include <cstddef>

namespace staylit {
namespace {

CGFloat topOf(NSTableView* table, std::size_t row) {
  return NSMinY([table rectOfRow:static_cast<NSInteger>(row)]);
}

void scrollTo(NSScrollView* view, CGFloat top) {
  NSClipView* clip = view.contentView;
  NSRect bounds = clip.bounds;
  bounds.origin.y = top;
  [clip scrollToPoint:[clip constrainBoundsRect:bounds].origin];
  [view reflectScrolledClipView:clip];
}

}  // namespace

ScrollPlace::ScrollPlace(NSTableView* table, const AppsLines& lines) {
  const NSRect seen = table.visibleRect;
  if (NSMinY(seen) <= 0) return;
  const NSRange rows = [table rowsInRect:seen];
  for (NSUInteger row = rows.location; row < NSMaxRange(rows); ++row) {
    const CGFloat top = topOf(table, row) - NSMinY(seen);
    if (lines.isEntry(row) && top >= 0) anchors_.add(lines.lines()[row], top);
  }
}

void ScrollPlace::restore(NSTableView* table, const AppsLines& lines) const {
  const auto place = anchors_.firstUnmoved(lines);
  if (place) scrollTo(table.enclosingScrollView, topOf(table, place->row) - place->top);
}

}  // namespace staylit
