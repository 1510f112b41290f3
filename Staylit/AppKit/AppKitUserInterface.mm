#include "Staylit/AppKit/AppKitUserInterface.h"

#import <AppKit/AppKit.h>

#include "Platform/MacOS/Loop/ModalWork.h"
#include "Platform/MacOS/Text/NSText.h"
#include "Staylit/AppKit/Status/AppKitStatusService.h"
#include "Staylit/AppKit/StatusItem/AppKitStatusItem.h"
#include "Staylit/AppKit/Windows/AppKitWindow.h"
#import "Staylit/AppKit/Windows/Apps/StaylitAppsContent.h"
#import "Staylit/AppKit/Windows/Settings/StaylitSettingsContent.h"

namespace staylit {
namespace {

Rect visibleFrame(NSScreen* screen) {
  const NSRect frame = screen.visibleFrame;
  return {{NSMinX(frame), NSMinY(frame)}, {NSWidth(frame), NSHeight(frame)}};
}

}  // namespace

std::unique_ptr<StatusItem> AppKitUserInterface::makeStatusItem(MenuDelegate& delegate) {
  return std::make_unique<AppKitStatusItem>(delegate);
}

std::unique_ptr<StatusService> AppKitUserInterface::offerStatus(StatusReporter& reporter) {
  return std::make_unique<AppKitStatusService>(reporter);
}

std::unique_ptr<ControlService> AppKitUserInterface::offerControl(PauseControl& /*pause*/) {
  return nullptr;
}

std::unique_ptr<Window> AppKitUserInterface::makeAppsWindow(const WindowStyle& style,
                                                            AppsView& view) {
  return std::make_unique<AppKitWindow>(style, [[StaylitAppsContent alloc] initWithView:view]);
}

std::unique_ptr<Window> AppKitUserInterface::makeSettingsWindow(const WindowStyle& style,
                                                                SettingsView& view) {
  return std::make_unique<AppKitWindow>(style, [[StaylitSettingsContent alloc] initWithView:view]);
}

std::vector<Rect> AppKitUserInterface::visibleFrames() {
  std::vector<Rect> frames;
  NSScreen* main = NSScreen.mainScreen;
  if (main != nil) frames.push_back(visibleFrame(main));
  for (NSScreen* screen in NSScreen.screens) {
    if (![screen isEqual:main]) frames.push_back(visibleFrame(screen));
  }
  return frames;
}

void AppKitUserInterface::activate() { [NSApp activateIgnoringOtherApps:YES]; }

void AppKitUserInterface::tell(const std::string& summary, const std::string& body) {
  NSAlert* alert = [[NSAlert alloc] init];
  alert.messageText = platform::nsString(summary);
  alert.informativeText = platform::nsString(body);
  platform::performModal([alert] {
    [NSApp activateIgnoringOtherApps:YES];
    [alert runModal];
  });
}

void AppKitUserInterface::terminate() { [NSApp terminate:nil]; }

}  // namespace staylit
