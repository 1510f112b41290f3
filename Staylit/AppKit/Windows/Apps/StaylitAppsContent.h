#pragma once

#import <AppKit/AppKit.h>

#import "Staylit/AppKit/Windows/StaylitWindowContent.h"
#include "Staylit/AppsView.h"

/// The content of the Choose Apps window: a header with the search, the two lists, and a footer.
/// Main thread only.
@interface StaylitAppsContent : NSView <StaylitWindowContent>

/// `view` must outlive the object or its `disconnect`.
- (instancetype)initWithView:(staylit::AppsView&)view NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithFrame:(NSRect)frame NS_UNAVAILABLE;
- (instancetype)initWithCoder:(NSCoder*)coder NS_UNAVAILABLE;

@end
