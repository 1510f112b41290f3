#import "Staylit/AppKit/Windows/Apps/StaylitAppsList.h"

#include <optional>

#include "Platform/MacOS/Text/NSText.h"
#include "Staylit/AppKit/Windows/Apps/LineHeights.h"
#import "Staylit/AppKit/Windows/Apps/StaylitAppsTable.h"
#import "Staylit/AppKit/Windows/Apps/StaylitLineCell.h"
#include "Staylit/AppKit/Windows/Parts/ScrollPlace.h"
#include "Staylit/AppsLines.h"

using staylit::AppsLine;
using staylit::AppsLines;
using Edit = AppsLines::Edit;

namespace {

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
  // The table has more room than this and stretches the column to fill it, so that the table is
  // never wider than its room.
  column.width = 100;
  column.resizingMask = NSTableColumnAutoresizingMask;
  return column;
}

NSIndexSet* rowSet(std::size_t row) { return [NSIndexSet indexSetWithIndex:row]; }

}  // namespace

@implementation StaylitAppsList {
  StaylitAppsTable* _table;
  AppsLines _lines;
  staylit::LineHeights _heights;
}

- (instancetype)initWithFrame:(NSRect)frame {
  self = [super initWithFrame:frame];
  if (self == nil) return nil;
  self.borderType = NSNoBorder;
  self.hasVerticalScroller = YES;
  self.horizontalScrollElasticity = NSScrollElasticityNone;
  self.documentView = [self makeTable];
  return self;
}

- (StaylitAppsTable*)makeTable {
  _table = [[StaylitAppsTable alloc] initWithFrame:NSZeroRect];
  [_table addTableColumn:makeColumn()];
  _table.headerView = nil;
  _table.style = NSTableViewStyleInset;
  _table.rowSizeStyle = NSTableViewRowSizeStyleCustom;
  _table.columnAutoresizingStyle = NSTableViewLastColumnOnlyAutoresizingStyle;
  _table.dataSource = self;
  _table.delegate = self;
  // A row is wider than its cell: there is room on either side.
  _table.target = self;
  _table.action = @selector(chooseClicked);
  __weak StaylitAppsList* weakSelf = self;
  _table.chosen = ^(NSInteger row) {
    [weakSelf chooseByKeyboard:row];
  };
  return _table;
}

/// A scroll bar that comes or goes changes the room for the column.
- (void)tile {
  [super tile];
  [_table sizeLastColumnToFit];
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
  const staylit::ScrollPlace place(_table, _lines);
  bool isEdited = false;
  // Rows change at once: while they glide, a click would hit another row, and the place could not
  // be kept.
  [NSAnimationContext beginGrouping];
  NSAnimationContext.currentContext.duration = 0;
  _lines.show(sections, [self, &isEdited](const Edit& edit) {
    [self apply:edit];
    isEdited = true;
  });
  [NSAnimationContext endGrouping];
  if (isEdited) place.restore(_table, _lines);
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

/// The row is changed in place, so that VoiceOver does not lose the row that it reads.
- (void)redraw:(std::size_t)row {
  [_table noteHeightOfRowsWithIndexesChanged:rowSet(row)];
  StaylitLineCell* cell = [_table viewAtColumn:0
                                           row:static_cast<NSInteger>(row)
                               makeIfNecessary:NO];
  [cell show:_lines.lines()[row]];
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

/// The selection keeps its place and so moves to the next application. The user can then move
/// several applications in turn.
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

- (void)chooseClicked {
  const NSInteger row = _table.clickedRow;
  // A click on the row does what a click on the button does, and that selects nothing.
  if (row >= 0) [_table deselectRow:row];
  [self choose:row];
}

- (CGFloat)tableView:(NSTableView*)__unused tableView heightOfRow:(NSInteger)row {
  return _heights.of(_lines.lines()[static_cast<std::size_t>(row)]);
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
