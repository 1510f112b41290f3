#include "Staylit/Desktop/Windows/QtWindowKit.h"

#include <QAbstractEventDispatcher>
#include <QIcon>
#include <QLibraryInfo>
#include <QLocale>
#include <QScreen>
#include <QSessionManager>
#include <QSocketNotifier>
#include <clocale>
#include <string_view>
#include <utility>

#include "Staylit/Desktop/Windows/Apps/AppsContent.h"
#include "Staylit/Desktop/Windows/QtWindow.h"
#include "Staylit/Desktop/Windows/Settings/SettingsContent.h"
#include "Tidewell/Words.h"

namespace staylit::windows {
namespace {

char programName[] = "staylit";
char platformOption[] = "-platform";

Rect toRect(const QRect& rect) {
  return {{double(rect.x()), double(rect.y())}, {double(rect.width()), double(rect.height())}};
}

/// Keeps a part of the process's locale as it is, for a scope.
class KeptLocale {
 public:
  explicit KeptLocale(int category) : category_(category) {
    if (const char* current = std::setlocale(category, nullptr)) former_ = current;
  }
  ~KeptLocale() { std::setlocale(category_, former_.c_str()); }
  KeptLocale(const KeptLocale&) = delete;
  KeptLocale& operator=(const KeptLocale&) = delete;

 private:
  int category_;
  std::string former_ = "C";
};

/// Qt sets the user's locale for the whole process. The program itself decides how numbers are read
/// and written, and the messages of the C library go to the log, which is in English.
std::unique_ptr<QApplication> makeApplication(int& argumentCount, char** arguments) {
  const KeptLocale numbers(LC_NUMERIC);
  const KeptLocale messages(LC_MESSAGES);
  return std::make_unique<QApplication>(argumentCount, arguments);
}

bool runsToTheLeft() {
  // TRANSLATORS: "direction:right-to-left" for a script that runs to the left, such as Arabic, else
  // this text as it is. It is not shown.
  return std::string_view(tidewell::Words::shown().phrase("direction:left-to-right")) ==
         "direction:right-to-left";
}

}  // namespace

QtWindowKit::QtWindowKit(DrivenLoop loop, std::string platform)
    : loop_(std::move(loop)),
      platform_(std::move(platform)),
      arguments_{programName, platformOption, platform_.data(), nullptr},
      argumentCount_(static_cast<int>(arguments_.size()) - 1),
      application_(makeApplication(argumentCount_, arguments_.data())) {
  Spoken::install();
  // The application gets no display name, because Qt would append it to every title.
  QCoreApplication::setApplicationName(QStringLiteral("Staylit"));
  speakTheUsersLanguage();
  QGuiApplication::setDesktopFileName(QStringLiteral("com.staylit.app"));
  // Qt must not end the program when the last window closes.
  QGuiApplication::setQuitOnLastWindowClosed(false);
  QCoreApplication::setQuitLockEnabled(false);
  // The program's own setting decides whether it starts with the next session.
  const auto neverRestart = [](QSessionManager& manager) {
    manager.setRestartHint(QSessionManager::RestartNever);
  };
  QObject::connect(qGuiApp, &QGuiApplication::commitDataRequest, qGuiApp, neverRestart,
                   Qt::DirectConnection);
  QObject::connect(qGuiApp, &QGuiApplication::saveStateRequest, qGuiApp, neverRestart,
                   Qt::DirectConnection);
  QGuiApplication::setWindowIcon(
      QIcon::fromTheme(QStringLiteral("com.staylit.app"),
                       QIcon(QStringLiteral(":/staylit/symbols/com.staylit.app.svg"))));
}

void QtWindowKit::speakTheUsersLanguage() {
  // Qt has texts of its own, such as those of the search field's menu.
  const QString folder = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
  const bool isTranslated = tidewell::Words::translator() != nullptr;
  if (isTranslated &&
      textsOfQt_.load(QLocale(), QStringLiteral("qtbase"), QStringLiteral("_"), folder)) {
    QCoreApplication::installTranslator(&textsOfQt_);
  }
  QGuiApplication::setLayoutDirection(runsToTheLeft() ? Qt::RightToLeft : Qt::LeftToRight);
}

void QtWindowKit::run() {
  QSocketNotifier readable(loop_.descriptor, QSocketNotifier::Read);
  QObject context;
  QObject::connect(&readable, &QSocketNotifier::activated, &context, [this] { pump(); });
  // The descriptor does not become readable for work that a window's event handler scheduled.
  QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock,
                   &context, [this] { pump(); });
  pump();
  if (!loop_.isStopping()) QApplication::exec();
}

void QtWindowKit::pump() const {
  loop_.pump();
  if (loop_.isStopping()) QCoreApplication::exit();
}

std::unique_ptr<Window> QtWindowKit::makeAppsWindow(const WindowStyle& style, AppsView& view) {
  auto window = std::make_unique<FixedWindow>(style);
  auto* content = new AppsContent(view, window.get());
  window->setContent(content);
  window->setOnEscape([content] { return content->clearSearch(); });
  return std::make_unique<QtWindow>(std::move(window), key_);
}

std::unique_ptr<Window> QtWindowKit::makeSettingsWindow(const WindowStyle& style,
                                                        SettingsView& view) {
  auto window = std::make_unique<FixedWindow>(style);
  auto* content = new SettingsContent(view, window.get());
  window->setContent(content);
  // The form is higher than the window was asked to be. Scrolling it for a few points would only
  // hide its last switch.
  window->growTo(content->formHeight());
  return std::make_unique<QtWindow>(std::move(window), key_);
}

std::vector<Rect> QtWindowKit::visibleFrames() {
  std::vector<Rect> frames;
  const QScreen* primary = QGuiApplication::primaryScreen();
  if (primary) frames.push_back(toRect(primary->availableGeometry()));
  for (const QScreen* screen : QGuiApplication::screens()) {
    if (screen != primary) frames.push_back(toRect(screen->availableGeometry()));
  }
  return frames;
}

void QtWindowKit::activate() {
  if (key_) key_->activateWindow();
}

}  // namespace staylit::windows
