#include "Staylit/AppKit/Windows/Parts/Drawing.h"

#include "Platform/MacOS/Text/NSText.h"

namespace staylit {
namespace {

NSFont* fontOf(NSFontTextStyle style) {
  return [NSFont preferredFontForTextStyle:style options:@{}];
}

NSStackView* makeStack(NSUserInterfaceLayoutOrientation orientation, NSLayoutAttribute alignment,
                       NSArray<NSView*>* views, CGFloat spacing) {
  NSStackView* stack = [NSStackView stackViewWithViews:views];
  stack.orientation = orientation;
  stack.alignment = alignment;
  stack.distribution = NSStackViewDistributionFill;
  stack.spacing = spacing;
  return stack;
}

}  // namespace

NSTextField* makeLabel(NSFontTextStyle style, NSColor* color) {
  NSTextField* label = [NSTextField labelWithString:@""];
  label.font = fontOf(style);
  label.textColor = color;
  label.lineBreakMode = NSLineBreakByTruncatingTail;
  [label setContentCompressionResistancePriority:NSLayoutPriorityDefaultLow
                                  forOrientation:NSLayoutConstraintOrientationHorizontal];
  return label;
}

NSTextField* makeWrappingLabel(NSFontTextStyle style, NSColor* color, CGFloat width) {
  NSTextField* label = [NSTextField wrappingLabelWithString:@""];
  label.font = fontOf(style);
  label.textColor = color;
  label.selectable = NO;
  label.preferredMaxLayoutWidth = width;
  return label;
}

NSImageView* makeSymbolView(NSFontTextStyle style, NSColor* color) {
  NSImageView* view = [[NSImageView alloc] init];
  view.symbolConfiguration = [NSImageSymbolConfiguration configurationWithTextStyle:style];
  view.contentTintColor = color;
  // This priority is lower than the one of a view with a width of its own.
  [view setContentHuggingPriority:NSLayoutPriorityDefaultHigh
                   forOrientation:NSLayoutConstraintOrientationHorizontal];
  hideFromAccessibility(view);
  return view;
}

NSImage* symbolNamed(std::string_view name, NSString* accessibilityDescription) {
  return [NSImage imageWithSystemSymbolName:platform::nsString(name)
                   accessibilityDescription:accessibilityDescription];
}

NSStackView* makeRow(NSArray<NSView*>* views, CGFloat spacing) {
  return makeStack(NSUserInterfaceLayoutOrientationHorizontal, NSLayoutAttributeCenterY, views,
                   spacing);
}

NSStackView* makeColumn(NSArray<NSView*>* views, CGFloat spacing) {
  return makeStack(NSUserInterfaceLayoutOrientationVertical, NSLayoutAttributeLeading, views,
                   spacing);
}

void stretchAcross(NSStackView* column, NSView* view) {
  const NSEdgeInsets insets = column.edgeInsets;
  [view.widthAnchor constraintEqualToAnchor:column.widthAnchor
                                   constant:-(insets.left + insets.right)]
      .active = YES;
}

NSBox* makeDivider() {
  NSBox* divider = [[NSBox alloc] init];
  divider.boxType = NSBoxSeparator;
  [divider.heightAnchor constraintEqualToConstant:1].active = YES;
  return divider;
}

NSView* makeSpacer() {
  // A plain view has no size of its own, so it is the first to stretch.
  return [[NSView alloc] init];
}

void fill(NSView* outer, NSView* inner, NSEdgeInsets insets) {
  inner.translatesAutoresizingMaskIntoConstraints = NO;
  [outer addSubview:inner];
  [NSLayoutConstraint activateConstraints:@[
    [inner.topAnchor constraintEqualToAnchor:outer.topAnchor constant:insets.top],
    [inner.leadingAnchor constraintEqualToAnchor:outer.leadingAnchor constant:insets.left],
    [outer.bottomAnchor constraintEqualToAnchor:inner.bottomAnchor constant:insets.bottom],
    [outer.trailingAnchor constraintEqualToAnchor:inner.trailingAnchor constant:insets.right],
  ]];
}

void hideFromAccessibility(NSView* view) {
  view.accessibilityElement = NO;
  // A control speaks through its cell.
  if ([view isKindOfClass:NSControl.class]) {
    static_cast<NSControl*>(view).cell.accessibilityElement = NO;
  }
}

}  // namespace staylit
