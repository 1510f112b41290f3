#pragma once

#include <QApplication>
#include <QPointer>
#include <memory>
#include <string>
#include <vector>

#include "Staylit/Desktop/Display/WindowsModule.h"
#include "Staylit/Desktop/Windows/FixedWindow.h"

namespace staylit::windows {

/// The windows on Qt. Main thread only; one in a process.
///
/// When the connection to the display breaks, Qt ends the process with status 1, without a chance
/// for anyone to say otherwise. What the program holds is given back by the system then.
class QtWindowKit : public WindowKit {
 public:
  /// `platform` is the name of a Qt platform that is known to work here: with any other, Qt ends
  /// the process.
  QtWindowKit(DrivenLoop loop, std::string platform);

  /// Returns before the loop is stopping when the desktop's session ends.
  void run() override;

  std::unique_ptr<Window> makeAppsWindow(const WindowStyle& style, AppsView& view) override;
  std::unique_ptr<Window> makeSettingsWindow(const WindowStyle& style, SettingsView& view) override;
  std::vector<Rect> visibleFrames() override;
  void activate() override;

 private:
  void pump();

  DrivenLoop loop_;
  std::string platform_;
  // Qt keeps pointers to all of these.
  std::vector<char*> arguments_;
  int argumentCount_;
  std::unique_ptr<QApplication> application_;
  QPointer<FixedWindow> key_;
};

}  // namespace staylit::windows
