#import "Staylit/AppKit/StaylitAppsList.h"

#include <map>
#include <optional>
#include <string>
#include <tuple>

#include "Platform/MacOS/NSText.h"
#import "Staylit/AppKit/StaylitAppCell.h"
#import "Staylit/AppKit/StaylitAppsTable.h"
#include "Staylit/AppsLines.h"

using staylit::AppsLine;
using staylit::AppsLines;
using Edit = AppsLines::Edit;

namespace {

/// An application that is looked at, and how far below the upper edge of what is seen.
struct Anchor {
  std::string id;
  std::size_t section;
  bool isWorking;
  CGFloat top;
};

/// What the height of a line depends on: its kind, whether it has a detail, and for a text that may
/// be broken into lines, which one it is.
using Shape = std::tuple<AppsLine::Kind, bool, std::size_t>;

Shape shapeOf(const AppsLine& line) {
  const bool isBroken = line.kind == AppsLine::Kind::empty;
  return {line.kind, line.detail.empty(), isBroken ? line.section : 0};
}

NSUserInterfaceItemIdentifier identifierOf(AppsLine::Kind kind) {
  switch (kind) {
    case AppsLine::Kind::heading:
      return @"heading";
    case AppsLine::Kind::empty:
      return @"empty";
    case AppsLine::Kind::entry:
      return @"entry";
  }
}

NSTableColumn* makeColumn() {
  NSTableColumn* column = [[NSTableColumn alloc] initWithIdentifier:@"lines"];
  // About what the table has for it, which stretches it from there.
  column.width = 420;
  column.resizingMask = NSTableColumnAutoresizingMask;
  return column;
}

NSIndexSet* rowSet(std::size_t row) { return [NSIndexSet indexSetWithIndex:row]; }

}  // namespace

@implementation StaylitAppsList {
  StaylitAppsTable* _table;
  AppsLines _lines;
  std::map<Shape, CGFloat> _heights;
}

- (instancetype)initWithFrame:(NSRect)frame {
  self = [super initWithFrame:frame];
  if (self == nil) return nil;
  self.borderType = NSNoBorder;
  self.hasVerticalScroller = YES;
  self.documentView = [self makeTable];
  return self;
}

- (StaylitAppsTable*)makeTable {
  _table = [[StaylitAppsTable alloc] initWithFrame:NSZeroRect];
  [_table addTableColumn:makeColumn()];
  _table.headerView = nil;
  _table.style = NSTableViewStyleInset;
  _table.rowSizeStyle = NSTableViewRowSizeStyleCustom;
  _table.columnAutoresizingStyle = NSTableViewUniformColumnAutoresizingStyle;
  _table.dataSource = self;
  _table.delegate = self;
  __weak StaylitAppsList* weakSelf = self;
  _table.chosen = ^(NSInteger row) {
    [weakSelf chooseByKeyboard:row];
  };
  return _table;
}

- (NSView*)keyView {
  return _table;
}

- (void)focus {
  if (_table.selectedRow < 0) [self select:_lines.entryNear(0)];
  [self.window makeFirstResponder:_table];
}

// What is shown.

- (void)showSections:(const std::vector<staylit::AppsView::Section>&)sections {
  if (_lines.lines().empty()) return [self fillWith:sections];
  const std::vector<Anchor> anchors = [self anchors];
  bool isEdited = false;
  // At once: rows that glide would be clicked for others, and the place could not be kept.
  [NSAnimationContext beginGrouping];
  NSAnimationContext.currentContext.duration = 0;
  _lines.show(sections, [self, &isEdited](const Edit& edit) {
    [self apply:edit];
    isEdited = true;
  });
  [NSAnimationContext endGrouping];
  if (isEdited) [self holdFast:anchors];
}

/// A table has to know its rows before any can be inserted or removed.
- (void)fillWith:(const std::vector<staylit::AppsView::Section>&)sections {
  _lines.show(sections, [](const Edit&) {});
  [_table reloadData];
  [_table layoutSubtreeIfNeeded];
}

- (void)apply:(const Edit&)edit {
  switch (edit.kind) {
    case Edit::Kind::remove:
      [_table removeRowsAtIndexes:rowSet(edit.row) withAnimation:NSTableViewAnimationEffectNone];
      return;
    case Edit::Kind::insert:
      [_table insertRowsAtIndexes:rowSet(edit.row) withAnimation:NSTableViewAnimationEffectNone];
      return;
    case Edit::Kind::move:
      [_table moveRowAtIndex:static_cast<NSInteger>(edit.row)
                     toIndex:static_cast<NSInteger>(edit.movedTo)];
      return;
    case Edit::Kind::change:
      [self redraw:edit.row];
      return;
  }
}

/// In place, so that whoever hears the row is not thrown off it.
- (void)redraw:(std::size_t)row {
  [_table noteHeightOfRowsWithIndexesChanged:rowSet(row)];
  StaylitLineCell* cell = [_table viewAtColumn:0
                                           row:static_cast<NSInteger>(row)
                               makeIfNecessary:NO];
  [cell show:_lines.lines()[row]];
}

// The place in the list.

/// None at the very top, where one wants to see what appears.
- (std::vector<Anchor>)anchors {
  std::vector<Anchor> anchors;
  const NSRect seen = _table.visibleRect;
  if (NSMinY(seen) <= 0) return anchors;
  const NSRange rows = [_table rowsInRect:seen];
  for (NSUInteger row = rows.location; row < NSMaxRange(rows); ++row) {
    const CGFloat top = [self topOf:row] - NSMinY(seen);
    if (!_lines.isEntry(row) || top < 0) continue;
    const AppsLine& line = _lines.lines()[row];
    anchors.push_back({line.id, line.section, line.isWorking, top});
  }
  return anchors;
}

- (CGFloat)topOf:(std::size_t)row {
  return NSMinY([_table rectOfRow:static_cast<NSInteger>(row)]);
}

/// Scrolls so that the first of `anchors` that is still in its place is where it was seen.
- (void)holdFast:(const std::vector<Anchor>&)anchors {
  for (const Anchor& anchor : anchors) {
    const std::optional<std::size_t> row = _lines.rowOf(anchor.id);
    if (!row) continue;
    const AppsLine& line = _lines.lines()[*row];
    if (line.section != anchor.section || line.isWorking != anchor.isWorking) continue;
    [self scrollTo:[self topOf:*row] - anchor.top];
    return;
  }
}

- (void)scrollTo:(CGFloat)top {
  NSClipView* clip = self.contentView;
  NSRect bounds = clip.bounds;
  bounds.origin.y = top;
  [clip scrollToPoint:[clip constrainBoundsRect:bounds].origin];
  [self reflectScrolledClipView:clip];
}

- (void)select:(std::optional<std::size_t>)row {
  if (!row) return;
  [_table selectRowIndexes:rowSet(*row) byExtendingSelection:NO];
  [_table scrollRowToVisible:static_cast<NSInteger>(*row)];
}

// What is chosen.

- (void)choose:(NSInteger)row {
  const auto index = static_cast<std::size_t>(row);
  if (row < 0 || !_lines.isEntry(index) || self.chosen == nil) return;
  self.chosen(platform::nsString(_lines.lines()[index].id));
}

/// The selection stays at its place, on the next application, so that several can be moved in turn.
- (void)chooseByKeyboard:(NSInteger)row {
  [self choose:row];
  [self select:_lines.entryNear(static_cast<std::size_t>(row))];
}

// The table's questions.

- (NSInteger)numberOfRowsInTableView:(NSTableView*)__unused tableView {
  return static_cast<NSInteger>(_lines.lines().size());
}

- (NSView*)tableView:(NSTableView*)tableView
    viewForTableColumn:(NSTableColumn*)__unused tableColumn
                   row:(NSInteger)row {
  const AppsLine& line = _lines.lines()[static_cast<std::size_t>(row)];
  StaylitLineCell* cell = [tableView makeViewWithIdentifier:identifierOf(line.kind) owner:nil];
  if (cell == nil) cell = [self makeCell:line.kind];
  [cell show:line];
  return cell;
}

- (StaylitLineCell*)makeCell:(AppsLine::Kind)kind {
  StaylitLineCell* cell = [StaylitLineCell cellForKind:kind];
  cell.identifier = identifierOf(kind);
  if ([cell isKindOfClass:StaylitAppCell.class]) {
    __weak StaylitAppsList* weakSelf = self;
    static_cast<StaylitAppCell*>(cell).pressed = ^(StaylitAppCell* pressed) {
      [weakSelf chooseByMouse:pressed];
    };
  }
  return cell;
}

- (void)chooseByMouse:(StaylitAppCell*)cell {
  [self choose:[_table rowForView:cell]];
}

- (CGFloat)tableView:(NSTableView*)__unused tableView heightOfRow:(NSInteger)row {
  const AppsLine& line = _lines.lines()[static_cast<std::size_t>(row)];
  const auto [height, isNew] = _heights.try_emplace(shapeOf(line), 0);
  if (isNew) {
    StaylitLineCell* sample = [StaylitLineCell cellForKind:line.kind];
    [sample show:line];
    height->second = sample.fittingSize.height;
  }
  return height->second;
}

- (BOOL)tableView:(NSTableView*)__unused tableView shouldSelectRow:(NSInteger)row {
  return _lines.isEntry(static_cast<std::size_t>(row));
}

- (NSString*)tableView:(NSTableView*)__unused tableView
    typeSelectStringForTableColumn:(NSTableColumn*)__unused tableColumn
                               row:(NSInteger)row {
  const auto index = static_cast<std::size_t>(row);
  return _lines.isEntry(index) ? platform::nsString(_lines.lines()[index].text) : nil;
}

@end
