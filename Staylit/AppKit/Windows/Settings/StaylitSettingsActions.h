#pragma once

#import <Foundation/Foundation.h>

#include <cstdint>

#include "Staylit/SettingsView.h"

/// Hears of what the user does to the rows of the settings form. Main thread only.
@protocol StaylitSettingsActions <NSObject>

- (void)control:(staylit::SettingsView::Control)control movedTo:(std::int64_t)value;
- (void)control:(staylit::SettingsView::Control)control turnedOn:(BOOL)on;

@end
