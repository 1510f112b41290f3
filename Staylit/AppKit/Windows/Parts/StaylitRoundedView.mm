#import "Staylit/AppKit/Windows/Parts/StaylitRoundedView.h"

#include <algorithm>

@implementation StaylitRoundedView {
  NSColor* _color;
  CGFloat _opacity;
  CGFloat _radius;
}

- (instancetype)initWithColor:(NSColor*)color
                      opacity:(CGFloat)opacity
                 cornerRadius:(CGFloat)radius {
  self = [super initWithFrame:NSZeroRect];
  if (self != nil) {
    _color = color;
    _opacity = opacity;
    _radius = radius;
  }
  return self;
}

- (void)drawRect:(NSRect)__unused dirtyRect {
  // Half of a line lies on either side of the path.
  const CGFloat inset = self.bordered ? 0.5 : 0;
  const NSRect bounds = NSInsetRect(self.bounds, inset, inset);
  const CGFloat radius = std::min({_radius, NSWidth(bounds) / 2, NSHeight(bounds) / 2});
  NSBezierPath* path = [NSBezierPath bezierPathWithRoundedRect:bounds
                                                       xRadius:radius
                                                       yRadius:radius];
  // Not of the colour, which would no longer follow the appearance then.
  CGContextSetAlpha(NSGraphicsContext.currentContext.CGContext, _opacity);
  [_color setFill];
  [path fill];
  if (!self.bordered) return;
  [NSColor.separatorColor setStroke];
  [path stroke];
}

@end
