#include "Staylit/AppKit/AppKitApplication.h"

#import <AppKit/AppKit.h>

#include "Staylit/AppKit/TerminationSignals.h"

/// Passes AppKit's messages on to the portable delegate, which must outlive it.
@interface StaylitApplicationDelegate : NSObject <NSApplicationDelegate>
- (instancetype)initWithDelegate:(staylit::ApplicationDelegate&)delegate NS_DESIGNATED_INITIALIZER;
- (instancetype)init NS_UNAVAILABLE;
@end

@implementation StaylitApplicationDelegate {
  staylit::ApplicationDelegate* _delegate;
}

- (instancetype)initWithDelegate:(staylit::ApplicationDelegate&)delegate {
  self = [super init];
  if (self != nil) _delegate = &delegate;
  return self;
}

- (void)applicationDidFinishLaunching:(NSNotification*)__unused notification {
  _delegate->applicationDidFinishLaunching();
}

- (void)applicationWillTerminate:(NSNotification*)__unused notification {
  _delegate->applicationWillTerminate();
}

/// The user opened the program again, in the Finder or by another start. It has no window that
/// could simply be brought back.
- (BOOL)applicationShouldHandleReopen:(NSApplication*)__unused application
                    hasVisibleWindows:(BOOL)__unused hasVisibleWindows {
  _delegate->applicationShouldHandleReopen();
  return NO;
}

- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)__unused application {
  return YES;
}

@end

namespace staylit {

void AppKitApplication::run(ApplicationDelegate& delegate) {
  @autoreleasepool {
    NSApplication* application = NSApplication.sharedApplication;
    // The application holds its delegate weakly, and ARC would drop the delegate after its last
    // use.
    NS_VALID_UNTIL_END_OF_SCOPE StaylitApplicationDelegate* forwarder =
        [[StaylitApplicationDelegate alloc] initWithDelegate:delegate];
    application.delegate = forwarder;
    [application setActivationPolicy:NSApplicationActivationPolicyAccessory];
    const TerminationSignals signals;
    // Without an activity, App Nap would stretch the timers of a program that shows no window.
    id<NSObject> activity = [NSProcessInfo.processInfo
        beginActivityWithOptions:NSActivityUserInitiatedAllowingIdleSystemSleep
                          reason:@"Watching for work in progress"];
    [application run];
    [NSProcessInfo.processInfo endActivity:activity];
    application.delegate = nil;
  }
}

}  // namespace staylit
