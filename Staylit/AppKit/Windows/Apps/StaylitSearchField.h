#pragma once

#import <AppKit/AppKit.h>

#include "Staylit/AppsView.h"

/// The search of the Choose Apps window: a symbol, the text that the user types, and a button that
/// empties the text, on a round ground. Main thread only.
@interface StaylitSearchField : NSView <NSTextFieldDelegate>

/// Called with the text at each change.
@property(nonatomic, copy) void (^changed)(NSString* text);
/// Called when the user leaves the field with the Down key.
@property(nonatomic, copy) void (^leftDownwards)(void);
/// Called when the user presses Escape in the field.
@property(nonatomic, copy) void (^cancelled)(void);

@property(nonatomic, copy) NSString* text;
/// The view in the field that has the keyboard.
@property(nonatomic, readonly) NSView* keyView;

- (instancetype)initWithTexts:(const staylit::AppsView::Header&)texts NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithFrame:(NSRect)frame NS_UNAVAILABLE;
- (instancetype)initWithCoder:(NSCoder*)coder NS_UNAVAILABLE;

/// Gives the field the keyboard and selects all of its text.
- (void)focus;

/// Empties the field and calls `changed`. Returns whether there was any text.
- (BOOL)clear;

@end
