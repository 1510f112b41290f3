#import "Staylit/AppKit/Windows/Apps/StaylitLineCell.h"

#include "Platform/MacOS/Text/NSText.h"
#include "Staylit/AppKit/Windows/Parts/Drawing.h"

namespace {

/// The least width of a row of the list, with scroll bars beside it.
constexpr CGFloat kEmptyTextWidth = 390;
constexpr CGFloat kEmptyMargin = 4;

}  // namespace

@implementation StaylitEmptyCell {
  NSTextField* _text;
}

- (instancetype)initWithFrame:(NSRect)frame {
  self = [super initWithFrame:frame];
  if (self == nil) return nil;
  _text = staylit::makeWrappingLabel(NSFontTextStyleCallout, NSColor.secondaryLabelColor,
                                     kEmptyTextWidth);
  [_text setContentCompressionResistancePriority:NSLayoutPriorityDefaultLow
                                  forOrientation:NSLayoutConstraintOrientationHorizontal];
  staylit::fill(self, _text, NSEdgeInsetsMake(kEmptyMargin, 0, kEmptyMargin, 0));
  return self;
}

- (void)show:(const staylit::AppsLine&)line {
  _text.stringValue = platform::nsString(line.text);
}

@end
