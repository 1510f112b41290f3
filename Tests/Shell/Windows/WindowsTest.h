#pragma once

#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QLineEdit>
#include <QTest>
#include <memory>
#include <string>
#include <vector>

#include "Staylit/AppsView.h"
#include "Staylit/SettingsView.h"
#include "Staylit/StaylitEngine.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Shell/Windows/Children.h"
#include "Tests/Shell/Windows/WindowSystem.h"

namespace staylit {

/// An engine over fakes, behind a window.
class WindowsTest : public ::testing::Test {
 protected:
  using Texts = std::vector<std::string>;
  using Integer = std::int64_t;

  void ignore(const Texts& list) { fakes.defaults.stored["ignoredApps"] = list; }
  Texts ignored() { return *fakes.defaults.stringList("ignoredApps"); }
  tidewell::PropertyValue stored(const char* key) { return fakes.defaults.stored[key]; }

  /// Runs the work that was posted to the program's loop, and lets the window draw.
  void turn() {
    fakes.mainLoop.runPosted();
    QApplication::processEvents();
  }

  static QWidget* focus() { return QApplication::focusWidget(); }
  static void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(focus(), static_cast<Qt::Key>(key), modifiers);
  }
  static void type(const char* text) { QTest::keyClicks(focus(), QString::fromUtf8(text)); }

  tidewell::FakePorts fakes;
  std::unique_ptr<StaylitEngine> engine = std::make_unique<StaylitEngine>(fakes.ports);
};

}  // namespace staylit
