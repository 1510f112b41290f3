#import "Staylit/AppKit/Windows/Settings/StaylitSettingsRow.h"

#include <variant>

#include "Platform/MacOS/Text/NSText.h"
#include "Staylit/AppKit/Windows/Parts/Drawing.h"

namespace {

constexpr CGFloat kValueSpacing = 8;

}  // namespace

@implementation StaylitValueRow {
  NSTextField* _value;
}

- (NSView*)makeBody {
  _value = staylit::makeLabel(NSFontTextStyleBody, NSColor.secondaryLabelColor);
  // VoiceOver reads the value together with its label.
  staylit::hideFromAccessibility(self.label);
  return staylit::makeRow(@[ self.label, staylit::makeSpacer(), _value ], kValueSpacing);
}

- (void)showContent:(const staylit::SettingsView::Row&)row {
  const std::string& text = std::get<staylit::SettingsView::Value>(row.content).text;
  _value.stringValue = platform::nsString(text);
  _value.accessibilityLabel = platform::nsString(row.label);
}

@end
