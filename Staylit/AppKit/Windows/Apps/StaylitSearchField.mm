#import "Staylit/AppKit/Windows/Apps/StaylitSearchField.h"

#include "Platform/MacOS/Text/NSText.h"
#include "Staylit/AppKit/Windows/Parts/Drawing.h"
#import "Staylit/AppKit/Windows/Parts/StaylitRoundedView.h"

namespace {

constexpr CGFloat kSearchSpacing = 6;
constexpr CGFloat kSearchPadding = 7;
constexpr CGFloat kSearchCornerRadius = 7;

NSTextField* makePlainField(NSString* placeholder) {
  NSTextField* field = [NSTextField textFieldWithString:@""];
  field.font = [NSFont preferredFontForTextStyle:NSFontTextStyleBody options:@{}];
  field.placeholderString = placeholder;
  field.bezeled = NO;
  field.bordered = NO;
  field.drawsBackground = NO;
  field.focusRingType = NSFocusRingTypeNone;
  field.usesSingleLineMode = YES;
  field.cell.scrollable = YES;
  field.accessibilitySubrole = NSAccessibilitySearchFieldSubrole;
  field.accessibilityLabel = placeholder;
  [field setContentHuggingPriority:1 forOrientation:NSLayoutConstraintOrientationHorizontal];
  return field;
}

}  // namespace

@implementation StaylitSearchField {
  NSTextField* _field;
  NSButton* _clearButton;
}

- (instancetype)initWithTexts:(const staylit::AppsView::Header&)texts {
  self = [super initWithFrame:NSZeroRect];
  if (self == nil) return nil;
  NSImageView* symbol = staylit::makeSymbolView(NSFontTextStyleBody, NSColor.secondaryLabelColor);
  symbol.image = staylit::symbolNamed(texts.searchSymbol, nil);
  _field = makePlainField(platform::nsString(texts.searchPlaceholder));
  _field.delegate = self;
  _clearButton = [self makeClearButton:texts];
  StaylitRoundedView* ground =
      [[StaylitRoundedView alloc] initWithColor:NSColor.controlBackgroundColor
                                        opacity:1
                                   cornerRadius:kSearchCornerRadius];
  ground.bordered = YES;
  staylit::fill(ground, staylit::makeRow(@[ symbol, _field, _clearButton ], kSearchSpacing),
                NSEdgeInsetsMake(kSearchPadding, kSearchPadding, kSearchPadding, kSearchPadding));
  staylit::fill(self, ground, NSEdgeInsetsMake(0, 0, 0, 0));
  return self;
}

- (NSButton*)makeClearButton:(const staylit::AppsView::Header&)texts {
  NSButton* button =
      [NSButton buttonWithImage:staylit::symbolNamed(texts.clearSymbol, @"Clear search")
                         target:self
                         action:@selector(pressClear)];
  button.bordered = NO;
  button.contentTintColor = NSColor.secondaryLabelColor;
  button.hidden = YES;
  // The button comes and goes, and must not change the height of the field.
  [button setContentCompressionResistancePriority:1
                                   forOrientation:NSLayoutConstraintOrientationVertical];
  [button setContentHuggingPriority:NSLayoutPriorityRequired
                     forOrientation:NSLayoutConstraintOrientationHorizontal];
  return button;
}

- (NSString*)text {
  return _field.stringValue;
}

- (void)setText:(NSString*)text {
  _field.stringValue = text;
  _clearButton.hidden = text.length == 0;
}

- (NSView*)keyView {
  return _field;
}

- (void)focus {
  [self.window makeFirstResponder:_field];
  [_field selectText:nil];
}

- (BOOL)clear {
  if (self.text.length == 0) return NO;
  self.text = @"";
  [self tellOfChange];
  return YES;
}

- (void)pressClear {
  [self clear];
  [self focus];
}

- (void)tellOfChange {
  if (self.changed != nil) self.changed(self.text);
}

- (void)controlTextDidChange:(NSNotification*)__unused notification {
  _clearButton.hidden = self.text.length == 0;
  [self tellOfChange];
}

- (BOOL)control:(NSControl*)__unused control
               textView:(NSTextView*)__unused textView
    doCommandBySelector:(SEL)command {
  if (command == @selector(cancelOperation:) && self.cancelled != nil) {
    self.cancelled();
    return YES;
  }
  if (command == @selector(moveDown:) && self.leftDownwards != nil) {
    self.leftDownwards();
    return YES;
  }
  return NO;
}

@end
