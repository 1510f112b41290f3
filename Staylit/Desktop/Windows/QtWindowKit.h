#pragma once

#include <QApplication>
#include <QPointer>
#include <QTranslator>
#include <memory>
#include <string>
#include <vector>

#include "Staylit/Desktop/Display/WindowsModule.h"
#include "Staylit/Desktop/Windows/FixedWindow.h"

namespace staylit::windows {

/// The windows on Qt. Main thread only; one kit in a process.
///
/// When the connection to the display breaks, Qt ends the process with status 1, and nobody can
/// prevent that. All holds end with the process.
class QtWindowKit : public WindowKit {
 public:
  /// `platform` is the name of a Qt platform that is known to work here: with any other, Qt ends
  /// the process.
  QtWindowKit(DrivenLoop loop, std::string platform);

  /// Also returns when the desktop's session ends, even if the loop is not stopping yet.
  void run() override;

  std::unique_ptr<Window> makeAppsWindow(const WindowStyle& style, AppsView& view) override;
  std::unique_ptr<Window> makeSettingsWindow(const WindowStyle& style, SettingsView& view) override;
  std::vector<Rect> visibleFrames() override;
  void activate() override;

 private:
  void speakTheUsersLanguage();
  void pump() const;

  DrivenLoop loop_;
  std::string platform_;
  // Qt keeps pointers to all of these members.
  std::vector<char*> arguments_;
  int argumentCount_;
  std::unique_ptr<QApplication> application_;
  QTranslator textsOfQt_;
  QPointer<FixedWindow> key_;
};

}  // namespace staylit::windows
