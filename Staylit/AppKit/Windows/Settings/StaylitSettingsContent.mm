#import "Staylit/AppKit/Windows/Settings/StaylitSettingsContent.h"

#import "Staylit/AppKit/Windows/Settings/StaylitSettingsForm.h"

using staylit::SettingsView;

@implementation StaylitSettingsContent {
  SettingsView* _view;
  staylit::Subscription _subscription;
  StaylitSettingsForm* _form;
}

- (instancetype)initWithView:(SettingsView&)view {
  self = [super initWithFrame:NSZeroRect];
  if (self == nil) return nil;
  _view = &view;
  self.borderType = NSNoBorder;
  self.drawsBackground = NO;
  self.hasVerticalScroller = YES;
  [self makeForm];
  [self follow];
  return self;
}

- (void)makeForm {
  _form = [[StaylitSettingsForm alloc] initWithActions:self];
  _form.translatesAutoresizingMaskIntoConstraints = NO;
  self.documentView = _form;
  NSClipView* clip = self.contentView;
  [NSLayoutConstraint activateConstraints:@[
    [_form.topAnchor constraintEqualToAnchor:clip.topAnchor],
    [_form.leadingAnchor constraintEqualToAnchor:clip.leadingAnchor],
    [_form.widthAnchor constraintEqualToAnchor:clip.widthAnchor],
  ]];
}

- (void)follow {
  __weak StaylitSettingsContent* weakSelf = self;
  _subscription = _view->observe([weakSelf] {
    StaylitSettingsContent* content = weakSelf;
    if (content.window.isVisible) [content refresh];
  });
}

// What the window asks its content.

- (NSView*)firstView {
  return nil;
}

- (void)refresh {
  if (_view != nullptr) [_form showSections:_view->form()];
}

- (void)disconnect {
  _subscription = {};
  _view = nullptr;
}

- (BOOL)cancel {
  return NO;
}

- (void)find {
}

// What the user does.

- (void)control:(SettingsView::Control)control movedTo:(std::int64_t)value {
  if (_view == nullptr) return;
  _view->setValue(control, value);
  [self refresh];
}

- (void)control:(SettingsView::Control)control turnedOn:(BOOL)on {
  if (_view == nullptr) return;
  _view->setOn(control, on);
  [self refresh];
  // An error under the control may have appeared out of sight.
  [_form scrollTo:control];
}

@end
