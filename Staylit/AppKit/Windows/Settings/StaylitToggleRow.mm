#import "Staylit/AppKit/Windows/Settings/StaylitSettingsRow.h"

#include <variant>

#include "Platform/MacOS/Text/NSText.h"
#include "Staylit/AppKit/Windows/Parts/Drawing.h"

namespace {

constexpr CGFloat kToggleSpacing = 8;

}  // namespace

@implementation StaylitToggleRow {
  NSSwitch* _switch;
}

- (NSView*)makeBody {
  _switch = [[NSSwitch alloc] init];
  _switch.controlSize = NSControlSizeSmall;
  _switch.target = self;
  _switch.action = @selector(flip);
  // VoiceOver reads the switch with its label, so the label itself is hidden from it.
  staylit::hideFromAccessibility(self.label);
  return staylit::makeRow(@[ self.label, staylit::makeSpacer(), _switch ], kToggleSpacing);
}

- (void)showContent:(const staylit::SettingsView::Row&)row {
  const bool isOn = std::get<staylit::SettingsView::Toggle>(row.content).isOn;
  _switch.state = isOn ? NSControlStateValueOn : NSControlStateValueOff;
  _switch.accessibilityLabel = platform::nsString(row.label);
  _switch.accessibilityHelp = platform::nsString(row.caption);
}

- (void)flip {
  [self.actions control:self.control turnedOn:_switch.state == NSControlStateValueOn];
}

@end
