#include "Staylit/AppKit/Windows/AppKitWindow.h"

#include "Platform/MacOS/Text/NSText.h"

namespace staylit {
namespace {

StaylitWindow* makeWindow(const WindowStyle& style, NSView<StaylitWindowContent>* content) {
  return [[StaylitWindow alloc]
      initWithTitle:platform::nsString(style.title)
               size:NSMakeSize(style.contentSize.width, style.contentSize.height)
            content:content];
}

}  // namespace

AppKitWindow::AppKitWindow(const WindowStyle& style, NSView<StaylitWindowContent>* content)
    : content_(content), window_(makeWindow(style, content)) {}

AppKitWindow::~AppKitWindow() {
  [content_ disconnect];
  [window_ close];
}

void AppKitWindow::setFrameOrigin(Point origin) {
  [window_ setFrameOrigin:NSMakePoint(origin.x, origin.y)];
}

void AppKitWindow::center() { [window_ center]; }

void AppKitWindow::makeKeyAndOrderFront() {
  [content_ refresh];
  [window_ makeKeyAndOrderFront:nil];
}

}  // namespace staylit
