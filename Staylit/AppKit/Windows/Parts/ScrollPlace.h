#pragma once

#import <AppKit/AppKit.h>

#include "Staylit/AppsLines.h"

namespace staylit {

/// Which applications are looked at in a list that is about to change, and where, so that they can
/// be put there again. Main thread only.
class ScrollPlace {
 public:
  /// Of `table`, which shows `lines`. At the very top it is no place: there one wants to see what
  /// appears.
  ScrollPlace(NSTableView* table, const AppsLines& lines);

  /// Scrolls so that the first application that has not moved within the list is where it was seen.
  void restore(NSTableView* table, const AppsLines& lines) const;

 private:
  AppsAnchors anchors_;
};

}  // namespace staylit
