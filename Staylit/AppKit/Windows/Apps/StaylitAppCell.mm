#import "Staylit/AppKit/Windows/Apps/StaylitLineCell.h"

#include "Platform/MacOS/Text/NSText.h"
#import "Staylit/AppKit/Windows/Apps/StaylitRowButton.h"
#include "Staylit/AppKit/Windows/Parts/Drawing.h"
#import "Staylit/AppKit/Windows/Parts/StaylitRoundedView.h"

namespace {

constexpr CGFloat kAppSpacing = 8;
constexpr CGFloat kSymbolWidth = 17;
constexpr CGFloat kDotSpacing = 6;
constexpr CGFloat kDotSize = 6;
constexpr CGFloat kAppMargin = 4;

void fixSize(NSView* view, CGFloat width, CGFloat height) {
  [NSLayoutConstraint activateConstraints:@[
    [view.widthAnchor constraintEqualToConstant:width],
    [view.heightAnchor constraintEqualToConstant:height],
  ]];
}

/// A place of one size for symbols of different sizes. A symbol that is wider than the place stands
/// out on both sides.
NSView* makeSymbolPlace(NSImageView* symbol) {
  NSView* place = [[NSView alloc] init];
  place.clipsToBounds = NO;
  fixSize(place, kSymbolWidth, kSymbolWidth);
  symbol.translatesAutoresizingMaskIntoConstraints = NO;
  [place addSubview:symbol];
  [NSLayoutConstraint activateConstraints:@[
    [symbol.centerXAnchor constraintEqualToAnchor:place.centerXAnchor],
    [symbol.centerYAnchor constraintEqualToAnchor:place.centerYAnchor],
  ]];
  return place;
}

/// An invisible button, as large as the view that it lies over.
NSButton* makeButton(id target, SEL action) {
  NSButton* button = [StaylitRowButton buttonWithTitle:@"" target:target action:action];
  button.bordered = NO;
  for (const auto orientation :
       {NSLayoutConstraintOrientationHorizontal, NSLayoutConstraintOrientationVertical}) {
    [button setContentHuggingPriority:1 forOrientation:orientation];
    [button setContentCompressionResistancePriority:1 forOrientation:orientation];
  }
  // The keyboard moves through the rows of the list, not through the buttons in the rows.
  button.refusesFirstResponder = YES;
  return button;
}

}  // namespace

@implementation StaylitAppCell {
  NSImageView* _symbol;
  NSTextField* _name;
  NSView* _dot;
  NSTextField* _detail;
  NSImageView* _moveSymbol;
  NSButton* _button;
}

- (instancetype)initWithFrame:(NSRect)frame {
  self = [super initWithFrame:frame];
  if (self == nil) return nil;
  [self makeViews];
  NSStackView* names = staylit::makeRow(@[ _name, _dot ], kDotSpacing);
  NSStackView* texts = staylit::makeColumn(@[ names, _detail ], 1);
  NSStackView* row = staylit::makeRow(
      @[ makeSymbolPlace(_symbol), texts, staylit::makeSpacer(), _moveSymbol ], kAppSpacing);
  staylit::fill(self, row, NSEdgeInsetsMake(kAppMargin, 0, kAppMargin, 0));
  staylit::fill(self, _button, NSEdgeInsetsMake(0, 0, 0, 0));
  return self;
}

- (void)makeViews {
  _symbol = staylit::makeSymbolView(NSFontTextStyleBody, NSColor.secondaryLabelColor);
  _name = staylit::makeLabel(NSFontTextStyleBody, NSColor.labelColor);
  _name.lineBreakMode = NSLineBreakByTruncatingMiddle;
  _dot = [[StaylitRoundedView alloc] initWithColor:NSColor.systemGreenColor
                                           opacity:1
                                      cornerRadius:kDotSize / 2];
  fixSize(_dot, kDotSize, kDotSize);
  _detail = staylit::makeLabel(NSFontTextStyleCaption1, NSColor.secondaryLabelColor);
  _moveSymbol = staylit::makeSymbolView(NSFontTextStyleBody, NSColor.tertiaryLabelColor);
  _button = makeButton(self, @selector(press));
  // VoiceOver reads the button, so the parts of the row are hidden from it.
  staylit::hideFromAccessibility(_name);
  staylit::hideFromAccessibility(_detail);
}

- (void)show:(const staylit::AppsLine&)line {
  _symbol.image = staylit::symbolNamed(line.symbol, nil);
  _name.stringValue = platform::nsString(line.text);
  _dot.hidden = !line.isWorking;
  _detail.stringValue = platform::nsString(line.detail);
  _detail.hidden = line.detail.empty();
  _moveSymbol.image = staylit::symbolNamed(line.moveSymbol, nil);
  _button.toolTip = platform::nsString(line.moveHint);
  _button.accessibilityLabel = platform::nsString(line.spoken());
  _button.accessibilityHelp = platform::nsString(line.moveHint);
}

/// The background is the row's. On the colour of a selection, every part takes the colour of
/// selected text.
- (void)setBackgroundStyle:(NSBackgroundStyle)style {
  [super setBackgroundStyle:style];
  const bool isSelected = style == NSBackgroundStyleEmphasized;
  NSColor* selected = NSColor.alternateSelectedControlTextColor;
  _name.textColor = isSelected ? selected : NSColor.labelColor;
  _detail.textColor = isSelected ? selected : NSColor.secondaryLabelColor;
  _symbol.contentTintColor = isSelected ? selected : NSColor.secondaryLabelColor;
  _moveSymbol.contentTintColor = isSelected ? selected : NSColor.tertiaryLabelColor;
}

- (void)press {
  if (self.pressed != nil) self.pressed(self);
}

@end
