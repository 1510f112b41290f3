#import "Staylit/AppKit/Windows/StaylitWindow.h"

@implementation StaylitWindow {
  __weak NSView<StaylitWindowContent>* _content;
}

- (instancetype)initWithTitle:(NSString*)title
                         size:(NSSize)size
                      content:(NSView<StaylitWindowContent>*)content {
  self = [super initWithContentRect:NSMakeRect(0, 0, size.width, size.height)
                          styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable
                            backing:NSBackingStoreBuffered
                              defer:NO];
  if (self == nil) return nil;
  self.title = title;
  self.releasedWhenClosed = NO;
  // The system has nothing to restore at the next start: only the menu opens a window.
  self.restorable = NO;
  // It comes to who opens it, rather than taking them to where it was last; also beside a program
  // that fills the screen.
  self.collectionBehavior =
      NSWindowCollectionBehaviorMoveToActiveSpace | NSWindowCollectionBehaviorFullScreenAuxiliary;
  _content = content;
  self.contentView = content;
  self.autorecalculatesKeyViewLoop = YES;
  self.initialFirstResponder = content.firstView;
  return self;
}

- (void)cancelOperation:(id)sender {
  if (![_content cancel]) [self performClose:sender];
}

- (void)findInContent:(id)__unused sender {
  [_content find];
}

@end
