// Draws both windows into PNG files that a person can look at. The windows are filled as on a busy
// afternoon.
//
//   staylit-screenshots FOLDER [light|dark|contrast] [SCALE] [STYLE, Fusion]
//
// The style "desktop" leaves style and colours to the desktop's theme for Qt. In another language
// by the locale of the environment.

#include <QApplication>
#include <QLineEdit>
#include <QPalette>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyleFactory>
#include <QTest>
#include <cstdio>
#include <string>

#include "Platform/Linux/Text/GettextTranslator.h"
#include "Staylit/AppsView.h"
#include "Staylit/Desktop/Windows/Apps/AppsList.h"
#include "Staylit/Desktop/Windows/Settings/Switch.h"
#include "Staylit/SettingsView.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Shell/Windows/Children.h"
#include "Tests/Shell/Windows/WindowSystem.h"
#include "Tidewell/Words.h"

namespace staylit {
namespace {

QPalette darkPalette() {
  QPalette palette(QColor(0x32, 0x32, 0x35), QColor(0x32, 0x32, 0x35));
  palette.setColor(QPalette::Base, QColor(0x24, 0x24, 0x26));
  palette.setColor(QPalette::ToolTipBase, QColor(0x24, 0x24, 0x26));
  palette.setColor(QPalette::Highlight, QColor(0x3d, 0x8b, 0xe8));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  return palette;
}

/// White and yellow on black, as desktops for weak eyes have it.
QPalette contrastPalette() {
  QPalette palette(Qt::white, Qt::black, Qt::white, Qt::black, Qt::darkGray, Qt::white, Qt::white,
                   Qt::black, Qt::black);
  palette.setColor(QPalette::Highlight, Qt::yellow);
  palette.setColor(QPalette::HighlightedText, Qt::black);
  return palette;
}

tidewell::BusyApp busy(const char* id, const char* name, tidewell::AppCategory category, double cpu,
                       double disk, double net) {
  tidewell::BusyApp app;
  app.id = id;
  app.display = name;
  app.category = category;
  app.cpuPercent = cpu;
  app.diskKBps = disk;
  app.netKBps = net;
  return app;
}

class Studio {
 public:
  Studio(std::string folder, std::string suffix)
      : folder_(std::move(folder)), suffix_(std::move(suffix)) {
    using enum tidewell::AppCategory;
    fakes_.powerSources.setBattery(64);
    fakes_.defaults.stored["ignoredApps"] = std::vector<std::string>{
        "com.spotify.client", "rsync", "backupd-helper", "com.example.nightly"};
    engine_.busyApps().set(
        {busy("blender", "Blender", videoAudio, 1184, 920, 0),
         busy("make", "make", development, 371, 18240, 0),
         busy("org.example.long",
              "The Extraordinarily Long Name of an Application That Goes On and On", other, 12, 0,
              4096)});
    engine_.powerState().set({false, 64, false, true});
  }

  void shootApps() {
    AppsView view(engine_, fakes_.ports);
    auto window = WindowSystem::shared().kit().makeAppsWindow({"Choose Apps", {460, 560}}, view);
    QWidget* widget = show(*window, "Choose Apps");
    save("apps", *widget);
    auto* list = &childOf<windows::AppsList>(*widget);
    const QPoint third = list->visualRect(list->model()->index(3, 0)).center();
    QTest::mouseMove(list->viewport(), third);
    QTest::qWait(50);
    save("apps-hover", *widget);
    QTest::mousePress(list->viewport(), Qt::LeftButton, {}, third);
    save("apps-pressed", *widget);
    QTest::mouseMove(list->viewport(), QPoint(1, 1));
    QTest::mouseRelease(list->viewport(), Qt::LeftButton, {}, QPoint(1, 1));
    list->setFocus(Qt::TabFocusReason);
    QTest::keyClick(list, Qt::Key_Down);
    save("apps-keyboard", *widget);
    QTest::keyClick(list, Qt::Key_End);
    save("apps-end", *widget);
    auto* edit = widget->findChild<QLineEdit*>();
    edit->setFocus();
    edit->setText("xcode");
    save("apps-search", *widget);
    edit->clear();
    fakes_.defaults.stored["ignoredApps"] = std::vector<std::string>{};
    fakes_.mainLoop.runPosted();
    edit->setText("zzzz");
    save("apps-empty", *widget);
    edit->clear();
    fakes_.defaults.stored["ignoredApps"] = allIdentifiers(view);
    fakes_.mainLoop.runPosted();
    QTest::qWait(50);
    save("apps-all-ignored", *widget);
    fakes_.defaults.stored["ignoredApps"] = std::vector<std::string>{"com.spotify.client", "rsync"};
  }

  void shootSettings() {
    SettingsView view(engine_, fakes_.ports);
    auto window =
        WindowSystem::shared().kit().makeSettingsWindow({"Staylit Settings", {460, 560}}, view);
    QWidget* widget = show(*window, "Staylit Settings");
    save("settings", *widget);
    auto* area = widget->findChild<QScrollArea*>();
    area->verticalScrollBar()->setValue(area->verticalScrollBar()->maximum());
    save("settings-end", *widget);
    area->verticalScrollBar()->setValue(0);
    fakes_.scripts.nextOutcomes.push_back(tidewell::FakePrivilegedScripts::declined());
    const auto switches = childrenOf<windows::Switch>(*widget);
    switches.at(0)->click();
    switches.at(1)->click();
    QTest::keyClick(widget, Qt::Key_Tab);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QTest::qWait(200);
    save("settings-error", *widget);
    fakes_.defaults.problem = "/home/kim/.config/staylit/settings.toml: No space left on device";
    switches.at(3)->click();
    QTest::qWait(200);
    save("settings-unsaved", *widget);
  }

 private:
  static std::vector<std::string> allIdentifiers(const AppsView& view) {
    std::vector<std::string> identifiers;
    for (const AppsView::Entry& entry : view.allEntries())
      identifiers.push_back(entry.id);
    return identifiers;
  }

  static QWidget* show(Window& window, const char* title) {
    window.makeKeyAndOrderFront();
    QWidget* widget = findWindow(QString::fromUtf8(title));
    QTest::qWait(50);
    return widget;
  }

  void save(const char* name, QWidget& widget) {
    const std::string path = folder_ + "/" + name + suffix_ + ".png";
    QTest::qWait(20);
    const bool saved = widget.grab().save(QString::fromStdString(path));
    std::printf("%s%s\n", path.c_str(), saved ? "" : ": cannot be written");
  }

  std::string folder_;
  std::string suffix_;
  tidewell::FakePorts fakes_;
  StaylitEngine engine_{fakes_.ports};
};

void dress(const std::string& look, const char* style) {
  if (QString::fromUtf8(style) == "desktop") return;
  QApplication::setStyle(QStyleFactory::create(style));
  if (look == "dark") return QApplication::setPalette(darkPalette());
  if (look == "contrast") return QApplication::setPalette(contrastPalette());
  QApplication::setPalette(QApplication::style()->standardPalette());
}

}  // namespace
}  // namespace staylit

int main(int argumentCount, char** arguments) {
  if (argumentCount < 2) {
    std::fprintf(stderr, "usage: %s FOLDER [light|dark|contrast] [SCALE] [STYLE]\n", arguments[0]);
    return 2;
  }
  const std::string look = argumentCount > 2 ? arguments[2] : "light";
  const std::string scale = argumentCount > 3 ? arguments[3] : "1";
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_SCALE_FACTOR", scale.c_str());
  tidewell::Words::setTranslator(platform::GettextTranslator::from(STAYLIT_CATALOGUES));
  staylit::WindowSystem::shared();
  staylit::dress(look, argumentCount > 4 ? arguments[4] : "Fusion");
  staylit::Studio studio(arguments[1], "-" + look + "-" + scale);
  studio.shootApps();
  studio.shootSettings();
}
