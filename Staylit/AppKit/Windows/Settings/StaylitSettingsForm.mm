#import "Staylit/AppKit/Windows/Settings/StaylitSettingsForm.h"

#include "Platform/MacOS/Text/NSText.h"
#include "Staylit/AppKit/Windows/Parts/Drawing.h"
#import "Staylit/AppKit/Windows/Parts/StaylitRoundedView.h"
#import "Staylit/AppKit/Windows/Settings/StaylitSettingsRow.h"

using staylit::SettingsView;

namespace {

constexpr CGFloat kFormHeight = 620;
constexpr CGFloat kFormSide = 20;
constexpr CGFloat kFormMargin = 14;
constexpr CGFloat kTitleSpacing = 6;
constexpr CGFloat kSectionSpacing = 12;
constexpr CGFloat kFormCornerRadius = 6;

/// The ground of a section, with `rows` on it. VoiceOver reads it as a group.
NSView* makeGround(NSString* title, NSView* rows) {
  StaylitRoundedView* ground =
      [[StaylitRoundedView alloc] initWithColor:NSColor.controlBackgroundColor
                                        opacity:1
                                   cornerRadius:kFormCornerRadius];
  ground.bordered = YES;
  ground.accessibilityElement = title.length != 0;
  ground.accessibilityRole = NSAccessibilityGroupRole;
  ground.accessibilityLabel = title;
  staylit::fill(ground, rows, NSEdgeInsetsMake(0, 0, 0, 0));
  return ground;
}

}  // namespace

@implementation StaylitSettingsForm {
  __weak id<StaylitSettingsActions> _actions;
  NSStackView* _column;
  NSMutableArray<StaylitSettingsRow*>* _rows;
}

- (instancetype)initWithActions:(id<StaylitSettingsActions>)actions {
  self = [super initWithFrame:NSZeroRect];
  if (self == nil) return nil;
  _actions = actions;
  _rows = [NSMutableArray array];
  _column = staylit::makeColumn(@[], kTitleSpacing);
  [self placeColumn];
  return self;
}

/// The column begins at the top and is as high as it needs to be.
- (void)placeColumn {
  _column.translatesAutoresizingMaskIntoConstraints = NO;
  [self addSubview:_column];
  [NSLayoutConstraint activateConstraints:@[
    [_column.topAnchor constraintEqualToAnchor:self.topAnchor constant:kFormMargin],
    [_column.leadingAnchor constraintEqualToAnchor:self.leadingAnchor constant:kFormSide],
    [self.trailingAnchor constraintEqualToAnchor:_column.trailingAnchor constant:kFormSide],
    [self.bottomAnchor constraintGreaterThanOrEqualToAnchor:_column.bottomAnchor
                                                   constant:kFormMargin],
    [self.heightAnchor constraintGreaterThanOrEqualToConstant:kFormHeight],
  ]];
  NSLayoutConstraint* height = [self.heightAnchor constraintEqualToConstant:kFormHeight];
  height.priority = NSLayoutPriorityDefaultLow;
  height.active = YES;
}

/// Scrolls the beginning of the form to the top.
- (BOOL)isFlipped {
  return YES;
}

- (void)showSections:(const std::vector<SettingsView::Section>&)sections {
  if (_rows.count == 0) [self makeSections:sections];
  NSUInteger next = 0;
  for (const SettingsView::Section& section : sections) {
    // All rows are shown: a switch that the user flipped may have to go back.
    for (const SettingsView::Row& row : section.rows) {
      [_rows[next++] show:row];
    }
  }
}

- (void)makeSections:(const std::vector<SettingsView::Section>&)sections {
  for (const SettingsView::Section& section : sections) {
    if (!section.title.empty()) [self addTitle:section.title];
    NSView* ground = makeGround(platform::nsString(section.title), [self makeRows:section]);
    [_column addArrangedSubview:ground];
    [_column setCustomSpacing:kSectionSpacing afterView:ground];
    staylit::stretchAcross(_column, ground);
  }
}

- (void)addTitle:(const std::string&)text {
  NSTextField* title = staylit::makeLabel(NSFontTextStyleHeadline, NSColor.labelColor);
  title.stringValue = platform::nsString(text);
  [_column addArrangedSubview:title];
}

- (NSView*)makeRows:(const SettingsView::Section&)section {
  NSStackView* rows = staylit::makeColumn(@[], 0);
  for (const SettingsView::Row& row : section.rows) {
    if (rows.arrangedSubviews.count != 0) [self add:staylit::makeDivider() to:rows];
    StaylitSettingsRow* made = [StaylitSettingsRow makeRow:row actions:_actions];
    [_rows addObject:made];
    [self add:made to:rows];
  }
  return rows;
}

- (void)add:(NSView*)view to:(NSStackView*)rows {
  [rows addArrangedSubview:view];
  staylit::stretchAcross(rows, view);
}

- (void)scrollTo:(SettingsView::Control)control {
  [self layoutSubtreeIfNeeded];
  for (StaylitSettingsRow* row in _rows) {
    if (row.control == control) [row scrollRectToVisible:row.bounds];
  }
}

@end
