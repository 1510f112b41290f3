#pragma once

#import <AppKit/AppKit.h>

#include "Staylit/AppsLines.h"

namespace staylit {

/// Remembers which applications are in sight in a list that is about to change, and where, so that
/// the list can be scrolled back to them. Main thread only.
class ScrollPlace {
 public:
  /// Reads `table`, which shows `lines`. At the very top it remembers nothing: there the user wants
  /// to see what appears.
  ScrollPlace(NSTableView* table, const AppsLines& lines);

  /// Scrolls so that the first application that has not moved within the list is where the user saw
  /// it.
  void restore(NSTableView* table, const AppsLines& lines) const;

 private:
  AppsAnchors anchors_;
};

}  // namespace staylit
