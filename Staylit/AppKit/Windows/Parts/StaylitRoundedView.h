#pragma once

#import <AppKit/AppKit.h>

/// A ground of one colour with round corners, drawn anew in every appearance. Main thread only.
@interface StaylitRoundedView : NSView

/// Whether a fine line goes around the ground, which sets it off from what is behind it at any
/// contrast.
@property(nonatomic, getter=isBordered) BOOL bordered;

/// A `radius` of more than half the height gives round ends: a capsule, or a dot. `opacity` is that
/// of the ground, on top of the colour's own; 1 changes nothing.
- (instancetype)initWithColor:(NSColor*)color
                      opacity:(CGFloat)opacity
                 cornerRadius:(CGFloat)radius NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithFrame:(NSRect)frame NS_UNAVAILABLE;
- (instancetype)initWithCoder:(NSCoder*)coder NS_UNAVAILABLE;

@end
