#import "Staylit/AppKit/Windows/Apps/StaylitLineCell.h"

@implementation StaylitLineCell

+ (StaylitLineCell*)cellForKind:(staylit::AppsLine::Kind)kind {
  switch (kind) {
    case staylit::AppsLine::Kind::heading:
      return [[StaylitHeadingCell alloc] initWithFrame:NSZeroRect];
    case staylit::AppsLine::Kind::empty:
      return [[StaylitEmptyCell alloc] initWithFrame:NSZeroRect];
    case staylit::AppsLine::Kind::entry:
      return [[StaylitAppCell alloc] initWithFrame:NSZeroRect];
  }
}

- (void)show:(const staylit::AppsLine&)__unused line {
  [self doesNotRecognizeSelector:_cmd];
}

@end
