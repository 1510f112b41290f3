#pragma once

#import <AppKit/AppKit.h>

#include "Staylit/AppsView.h"

/// The search of the Choose Apps window: a symbol, what is typed, and a button that empties it, on
/// a round ground. Main thread only.
@interface StaylitSearchField : NSView <NSTextFieldDelegate>

/// Told of each change.
@property(nonatomic, copy) void (^changed)(NSString* text);
/// Told when the user leaves the field downwards.
@property(nonatomic, copy) void (^leftDownwards)(void);
/// Told when the user presses Escape in it.
@property(nonatomic, copy) void (^cancelled)(void);

@property(nonatomic, copy) NSString* text;
/// What has the keyboard in the field.
@property(nonatomic, readonly) NSView* keyView;

- (instancetype)initWithTexts:(const staylit::AppsView::Header&)texts NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithFrame:(NSRect)frame NS_UNAVAILABLE;
- (instancetype)initWithCoder:(NSCoder*)coder NS_UNAVAILABLE;

/// Gives the field the keyboard, with all of its text selected.
- (void)focus;

/// Empties the field and tells of it. Whether there was anything in it.
- (BOOL)clear;

@end
