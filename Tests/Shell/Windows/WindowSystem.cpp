#include "Tests/Shell/Windows/WindowSystem.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <QApplication>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "StaylitBuildIdentity.h"

extern "C" staylit::WindowKit* STAYLIT_OF_THIS_BUILD(staylitMakeWindowKit)(
    const staylit::DrivenLoop& loop, const std::string& platform,
    std::shared_ptr<const tidewell::Translator> translator);

namespace staylit {

WindowSystem& WindowSystem::shared() {
  // The kit is never destroyed, because Qt cannot start twice in a process.
  static auto* system = new WindowSystem;
  return *system;
}

WindowSystem::WindowSystem() : descriptor_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
  kit_.reset(STAYLIT_OF_THIS_BUILD(staylitMakeWindowKit)(
      {descriptor_, [this] { pump(); }, [this] { return isStopping; }},
      qEnvironmentVariable("QT_QPA_PLATFORM").toStdString(), tidewell::Words::translator()));
  if (kit_) return;
  qCritical("no window kit");
  std::abort();
}

void WindowSystem::wake() {
  const std::uint64_t one = 1;
  if (write(descriptor_, &one, sizeof one) != sizeof one) std::abort();
}

void WindowSystem::pump() {
  ++pumps;
  std::uint64_t count = 0;
  const bool isReady = read(descriptor_, &count, sizeof count) == sizeof count;
  if (isReady && onPump) onPump();
}

QWidget* findWindow(const QString& title) {
  for (QWidget* widget : QApplication::topLevelWidgets()) {
    if (widget->windowTitle() == title) return widget;
  }
  return nullptr;
}

}  // namespace staylit
