#import "Staylit/AppKit/Windows/Apps/StaylitAppsContent.h"

#include "Platform/MacOS/Text/NSText.h"
#import "Staylit/AppKit/Windows/Apps/StaylitAppsList.h"
#import "Staylit/AppKit/Windows/Apps/StaylitSearchField.h"
#include "Staylit/AppKit/Windows/Parts/Drawing.h"

using staylit::AppsView;

namespace {

constexpr CGFloat kContentPadding = 16;
constexpr CGFloat kHeaderSpacing = 9;
constexpr CGFloat kFooterMargin = 11;

}  // namespace

@implementation StaylitAppsContent {
  AppsView* _view;
  staylit::Subscription _subscription;
  StaylitSearchField* _search;
  StaylitAppsList* _list;
  NSTextField* _footerText;
  NSButton* _footerButton;
}

- (instancetype)initWithView:(AppsView&)view {
  self = [super initWithFrame:NSZeroRect];
  if (self == nil) return nil;
  _view = &view;
  [self makeSearch];
  [self makeList];
  NSStackView* column = staylit::makeColumn(
      @[
        [self makeHeader], staylit::makeDivider(), _list, staylit::makeDivider(), [self makeFooter]
      ],
      0);
  for (NSView* part in column.arrangedSubviews) {
    staylit::stretchAcross(column, part);
  }
  staylit::fill(self, column, NSEdgeInsetsMake(0, 0, 0, 0));
  [self follow];
  return self;
}

- (void)makeSearch {
  __weak StaylitAppsContent* weakSelf = self;
  _search = [[StaylitSearchField alloc] initWithTexts:_view->header()];
  _search.text = platform::nsString(_view->search());
  _search.changed = ^(NSString* text) {
    [weakSelf searchFor:text];
  };
  _search.leftDownwards = ^{
    [weakSelf goToList];
  };
  _search.cancelled = ^{
    [weakSelf.window cancelOperation:nil];
  };
}

- (void)makeList {
  __weak StaylitAppsContent* weakSelf = self;
  _list = [[StaylitAppsList alloc] initWithFrame:NSZeroRect];
  _list.keyView.accessibilityLabel = platform::nsString(_view->header().title);
  _list.chosen = ^(NSString* identifier) {
    [weakSelf move:identifier];
  };
}

- (NSView*)makeHeader {
  const AppsView::Header texts = _view->header();
  NSTextField* title = staylit::makeLabel(NSFontTextStyleHeadline, NSColor.labelColor);
  title.stringValue = platform::nsString(texts.title);
  NSTextField* subtitle = staylit::makeLabel(NSFontTextStyleCaption1, NSColor.secondaryLabelColor);
  subtitle.stringValue = platform::nsString(texts.subtitle);
  NSStackView* header = staylit::makeColumn(@[ title, subtitle, _search ], kHeaderSpacing);
  header.edgeInsets =
      NSEdgeInsetsMake(kContentPadding, kContentPadding, kContentPadding, kContentPadding);
  staylit::stretchAcross(header, _search);
  return header;
}

- (NSView*)makeFooter {
  _footerText = staylit::makeLabel(NSFontTextStyleCallout, NSColor.secondaryLabelColor);
  _footerButton = [NSButton buttonWithTitle:@"" target:self action:@selector(watchEverything)];
  NSStackView* footer =
      staylit::makeRow(@[ _footerText, staylit::makeSpacer(), _footerButton ], kContentPadding);
  footer.edgeInsets =
      NSEdgeInsetsMake(kFooterMargin, kContentPadding, kFooterMargin, kContentPadding);
  return footer;
}

- (void)follow {
  __weak StaylitAppsContent* weakSelf = self;
  _subscription = _view->observe([weakSelf] {
    StaylitAppsContent* content = weakSelf;
    if (content.window.isVisible) [content refresh];
  });
}

// What the window asks its content.

- (NSView*)firstView {
  return _search.keyView;
}

- (void)refresh {
  if (_view == nullptr) return;
  [_list showSections:_view->sections()];
  const AppsView::Footer footer = _view->footer();
  _footerText.stringValue = platform::nsString(footer.text);
  _footerButton.title = platform::nsString(footer.button);
  _footerButton.enabled = footer.buttonEnabled;
}

- (void)disconnect {
  _subscription = {};
  _view = nullptr;
}

- (BOOL)cancel {
  return [_search clear];
}

- (void)find {
  [_search focus];
}

// What the user does.

- (void)searchFor:(NSString*)text {
  if (_view == nullptr) return;
  _view->setSearch(platform::utf8(text));
  [self refresh];
}

- (void)goToList {
  [_list focus];
}

- (void)move:(NSString*)identifier {
  if (_view == nullptr) return;
  _view->move(platform::utf8(identifier));
  [self refresh];
}

- (void)watchEverything {
  if (_view == nullptr) return;
  _view->watchEverything();
  [self refresh];
}

@end
