#import "Staylit/AppKit/Windows/Settings/StaylitSettingsRow.h"

#include <variant>

#include "Platform/MacOS/Text/NSText.h"
#include "Staylit/AppKit/Windows/Parts/Drawing.h"

using staylit::SettingsView;

namespace {

constexpr CGFloat kRowSpacing = 4;
constexpr CGFloat kRowVertical = 7;
constexpr CGFloat kRowHorizontal = 12;
/// The least width of a row, with a scroll bar beside the form.
constexpr CGFloat kNoteWidth = 376;

Class rowClassFor(const SettingsView::Row& row) {
  if (std::holds_alternative<SettingsView::Slider>(row.content)) return StaylitSliderRow.class;
  if (std::holds_alternative<SettingsView::Toggle>(row.content)) return StaylitToggleRow.class;
  return StaylitValueRow.class;
}

NSTextField* makeNote(NSColor* color) {
  NSTextField* note = staylit::makeWrappingLabel(NSFontTextStyleCaption1, color, kNoteWidth);
  note.hidden = YES;
  return note;
}

void showNote(NSTextField* note, const std::string& text) {
  note.stringValue = platform::nsString(text);
  note.hidden = text.empty();
}

/// Makes VoiceOver tell the user of a text that appeared elsewhere.
void announce(NSString* text) {
  NSAccessibilityPostNotificationWithUserInfo(
      NSApp, NSAccessibilityAnnouncementRequestedNotification, @{
        NSAccessibilityAnnouncementKey : text,
        NSAccessibilityPriorityKey : @(NSAccessibilityPriorityHigh),
      });
}

}  // namespace

@implementation StaylitSettingsRow {
  NSTextField* _error;
  NSTextField* _caption;
}

+ (StaylitSettingsRow*)makeRow:(const SettingsView::Row&)row
                       actions:(id<StaylitSettingsActions>)actions {
  StaylitSettingsRow* made = [[rowClassFor(row) alloc] initWithFrame:NSZeroRect];
  made->_control = row.control;
  made->_actions = actions;
  return made;
}

- (instancetype)initWithFrame:(NSRect)frame {
  self = [super initWithFrame:frame];
  if (self == nil) return nil;
  self.orientation = NSUserInterfaceLayoutOrientationVertical;
  self.alignment = NSLayoutAttributeLeading;
  self.distribution = NSStackViewDistributionFill;
  self.spacing = kRowSpacing;
  self.edgeInsets = NSEdgeInsetsMake(kRowVertical, kRowHorizontal, kRowVertical, kRowHorizontal);
  _label = staylit::makeLabel(NSFontTextStyleBody, NSColor.labelColor);
  _error = makeNote(NSColor.systemRedColor);
  _caption = makeNote(NSColor.secondaryLabelColor);
  NSView* body = [self makeBody];
  for (NSView* part in @[ body, _error, _caption ]) {
    [self addArrangedSubview:part];
  }
  staylit::stretchAcross(self, body);
  return self;
}

- (void)show:(const SettingsView::Row&)row {
  NSString* error = platform::nsString(row.error);
  const bool isNewError = error.length != 0 && ![error isEqualToString:_error.stringValue];
  _label.stringValue = platform::nsString(row.label);
  [self showContent:row];
  showNote(_error, row.error);
  showNote(_caption, row.caption);
  if (isNewError) announce(error);
}

- (NSView*)makeBody {
  return _label;
}

- (void)showContent:(const SettingsView::Row&)__unused row {
}

@end
