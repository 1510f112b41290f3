#pragma once

#import <AppKit/AppKit.h>

#include <string_view>

namespace staylit {

// What the windows are drawn with: the system's own text styles, colours and symbols, so that they
// follow its appearance, its contrast and its text sizes. Main thread only.

/// A label of one line in `color`, which gives way at its end where there is too little room.
NSTextField* makeLabel(NSFontTextStyle style, NSColor* color);

/// A label that breaks its text into lines of at most `width` points.
NSTextField* makeWrappingLabel(NSFontTextStyle style, NSColor* color, CGFloat width);

/// A view for a symbol of the system in `color`, of the size of text in `style`. It shows none yet.
NSImageView* makeSymbolView(NSFontTextStyle style, NSColor* color);

/// A symbol of the system; nil where the system does not know it.
NSImage* symbolNamed(std::string_view name, NSString* accessibilityDescription);

/// A row of views, centred on a line; where it is wider than they are, the room is between what was
/// told to stretch.
NSStackView* makeRow(NSArray<NSView*>* views, CGFloat spacing);

/// A column of views that begin at one edge.
NSStackView* makeColumn(NSArray<NSView*>* views, CGFloat spacing);

/// Makes `view` as wide as the column that it stands in, whose insets are set already.
void stretchAcross(NSStackView* column, NSView* view);

/// A line across that parts what is above from what is below.
NSBox* makeDivider();

/// Something that takes all the room that a row has left.
NSView* makeSpacer();

/// Puts `inner` into `outer`, over what is there already, and makes it fill that but for `insets`.
void fill(NSView* outer, NSView* inner, NSEdgeInsets insets);

/// For what is spoken of elsewhere, or only decorates.
void hideFromAccessibility(NSView* view);

}  // namespace staylit
