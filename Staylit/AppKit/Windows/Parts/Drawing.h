#pragma once

#import <AppKit/AppKit.h>

#include <string_view>

namespace staylit {

// Parts that the windows are drawn with. They use the system's own text styles, colours and
// symbols, and so follow its appearance, its contrast and its text sizes. Main thread only.

/// A label of one line in `color`. Where there is too little room, its end is left out.
NSTextField* makeLabel(NSFontTextStyle style, NSColor* color);

/// A label that breaks its text into lines of at most `width` points.
NSTextField* makeWrappingLabel(NSFontTextStyle style, NSColor* color, CGFloat width);

/// A view for one of the system's symbols, in `color` and as large as text in `style`. It shows no
/// symbol yet.
NSImageView* makeSymbolView(NSFontTextStyle style, NSColor* color);

/// A symbol of the system; nil where the system does not know it.
NSImage* symbolNamed(std::string_view name, NSString* accessibilityDescription);

/// A row of views, centred on a line. Where the row is wider than its views, those that were told
/// to stretch take the room.
NSStackView* makeRow(NSArray<NSView*>* views, CGFloat spacing);

/// A column of views that begin at one edge.
NSStackView* makeColumn(NSArray<NSView*>* views, CGFloat spacing);

/// Makes `view` as wide as the column that it stands in, whose insets are set already.
void stretchAcross(NSStackView* column, NSView* view);

/// A horizontal line between what is above and what is below.
NSBox* makeDivider();

/// A view that takes all the room that a row has left.
NSView* makeSpacer();

/// Puts `inner` into `outer`, above the views that are there already, and makes `inner` fill
/// `outer` except for `insets`.
void fill(NSView* outer, NSView* inner, NSEdgeInsets insets);

/// For a view that only decorates, or whose text is spoken elsewhere.
void hideFromAccessibility(NSView* view);

}  // namespace staylit
