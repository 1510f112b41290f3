#import "Staylit/AppKit/Windows/Settings/StaylitSettingsRow.h"

#include <cmath>
#include <variant>

#include "Platform/MacOS/Text/NSText.h"
#include "Staylit/AppKit/Windows/Parts/Drawing.h"

namespace {

constexpr CGFloat kSliderSpacing = 4;

}  // namespace

@implementation StaylitSliderRow {
  NSSlider* _slider;
}

- (NSView*)makeBody {
  _slider = [NSSlider sliderWithTarget:self action:@selector(move)];
  _slider.continuous = YES;
  // The knob stops at the marks only.
  _slider.allowsTickMarkValuesOnly = YES;
  NSStackView* body = staylit::makeColumn(@[ self.label, _slider ], kSliderSpacing);
  staylit::stretchAcross(body, _slider);
  // The label reads the same as the slider itself, so VoiceOver skips the label.
  staylit::hideFromAccessibility(self.label);
  return body;
}

- (void)showContent:(const staylit::SettingsView::Row&)row {
  const auto& slider = std::get<staylit::SettingsView::Slider>(row.content);
  _slider.minValue = static_cast<double>(slider.minimum);
  _slider.maxValue = static_cast<double>(slider.maximum);
  _slider.numberOfTickMarks = (slider.maximum - slider.minimum) / slider.step + 1;
  _slider.doubleValue = static_cast<double>(slider.value);
  _slider.accessibilityLabel = platform::nsString(row.label);
  _slider.accessibilityValueDescription = platform::nsString(slider.text);
  _slider.accessibilityHelp = platform::nsString(row.caption);
}

- (void)move {
  [self.actions control:self.control movedTo:std::llround(_slider.doubleValue)];
}

@end
