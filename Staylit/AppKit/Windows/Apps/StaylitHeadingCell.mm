#import "Staylit/AppKit/Windows/Apps/StaylitLineCell.h"

#include <string>

#include "Platform/MacOS/Text/NSText.h"
#include "Staylit/AppKit/Windows/Parts/Drawing.h"
#import "Staylit/AppKit/Windows/Parts/StaylitRoundedView.h"

namespace {

constexpr CGFloat kHeadingSpacing = 6;
constexpr CGFloat kAboveHeading = 10;
constexpr CGFloat kBelowHeading = 4;
constexpr CGFloat kBadgeOpacity = 0.14;
constexpr CGFloat kRoundEnds = 100;

}  // namespace

@implementation StaylitHeadingCell {
  NSImageView* _symbol;
  NSTextField* _title;
  NSTextField* _count;
  NSTextField* _subtitle;
}

- (instancetype)initWithFrame:(NSRect)frame {
  self = [super initWithFrame:frame];
  if (self == nil) return nil;
  _symbol = staylit::makeSymbolView(NSFontTextStyleHeadline, NSColor.labelColor);
  _title = staylit::makeLabel(NSFontTextStyleHeadline, NSColor.labelColor);
  _subtitle = staylit::makeLabel(NSFontTextStyleCaption2, NSColor.tertiaryLabelColor);
  NSStackView* row = staylit::makeRow(@[ _symbol, _title, [self makeBadge] ], kHeadingSpacing);
  NSStackView* column = staylit::makeColumn(@[ row, _subtitle ], 1);
  staylit::fill(self, column, NSEdgeInsetsMake(kAboveHeading, 0, kBelowHeading, 0));
  return self;
}

- (NSView*)makeBadge {
  _count = staylit::makeLabel(NSFontTextStyleCaption1, NSColor.secondaryLabelColor);
  // Where there is too little room, the title is shortened and the number is not.
  [_count setContentCompressionResistancePriority:NSLayoutPriorityRequired
                                   forOrientation:NSLayoutConstraintOrientationHorizontal];
  NSView* badge = [[StaylitRoundedView alloc] initWithColor:NSColor.secondaryLabelColor
                                                    opacity:kBadgeOpacity
                                               cornerRadius:kRoundEnds];
  staylit::fill(badge, _count, NSEdgeInsetsMake(1, 6, 1, 6));
  return badge;
}

- (void)show:(const staylit::AppsLine&)line {
  _symbol.image = staylit::symbolNamed(line.symbol, nil);
  _title.stringValue = platform::nsString(line.text);
  _count.stringValue = platform::nsString(std::to_string(line.count));
  _subtitle.stringValue = platform::nsString(line.detail);
}

@end
