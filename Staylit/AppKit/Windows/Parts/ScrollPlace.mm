#include "Staylit/AppKit/Windows/Parts/ScrollPlace.h"

#include <optional>

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
    if (!lines.isEntry(row) || top < 0) continue;
    const AppsLine& line = lines.lines()[row];
    anchors_.push_back({line.id, line.section, line.isWorking, top});
  }
}

void ScrollPlace::restore(NSTableView* table, const AppsLines& lines) const {
  for (const Anchor& anchor : anchors_) {
    const std::optional<std::size_t> row = lines.rowOf(anchor.id);
    if (!row) continue;
    const AppsLine& line = lines.lines()[*row];
    if (line.section != anchor.section || line.isWorking != anchor.isWorking) continue;
    return scrollTo(table.enclosingScrollView, topOf(table, *row) - anchor.top);
  }
}

}  // namespace staylit
