#include "Staylit/Desktop/Display/Windowing.h"

#include <utility>

#include "Platform/Linux/Modules/Modules.h"
#include "Staylit/Desktop/Display/Display.h"
#include "Staylit/Desktop/Session/DesktopNotification.h"
#include "Staylit/Desktop/Session/LoginSession.h"
#include "Tidewell/Log.h"

namespace staylit {
namespace {

using Kind = DisplayTrial::Verdict::Kind;

constexpr const char* kInstall = "Please install the package staylit-desktop.";
const std::string kCannotShow = "Staylit cannot show a window: ";
constexpr const char* kInstallAnew = "Please install the package staylit-desktop anew.";

}  // namespace

Windowing::Windowing(platform::EventLoop& loop, platform::Bus& sessionBus)
    : loop_(loop), sessionBus_(sessionBus) {}

WindowKit* Windowing::kit(std::function<void()> again) {
  if (kit_) return kit_.get();
  waiting_.push_back(std::move(again));
  if (!trial_) tryDisplay();
  return nullptr;
}

std::string Windowing::obstacle() {
  if (kit_) return "";
  const auto obstacle = findObstacle();
  return obstacle ? kCannotShow + obstacle->why : "";
}

std::optional<Windowing::Obstacle> Windowing::findObstacle() {
  if (!Display::isKnown()) Display::learnFromServiceManager(sessionBus_);
  if (!Display::isKnown()) {
    return Obstacle{"there is no display", "Start Staylit within a desktop session."};
  }
  if (platform::moduleFile(kWindowsModule).empty()) {
    return Obstacle{"its windows are not installed", kInstall};
  }
  return std::nullopt;
}

void Windowing::tryDisplay() {
  if (const auto obstacle = findObstacle()) return cannotShow(obstacle->why, obstacle->remedy);
  trial_ = std::make_unique<DisplayTrial>(
      loop_, [this](const DisplayTrial::Verdict& verdict) { tried(verdict); });
}

void Windowing::tried(const DisplayTrial::Verdict& verdict) {
  // The trial keeps the display connected until the kit has connected to it.
  const std::unique_ptr<DisplayTrial> trial = std::move(trial_);
  if (verdict.kind == Kind::usable) return makeKit(verdict.platform);
  if (!verdict.reason.empty() && lastReason_ != verdict.reason) {
    tidewell::Log::error(verdict.reason);
    lastReason_ = verdict.reason;
  }
  if (verdict.kind == Kind::ofAnotherBuild) {
    return cannotShow("its windows are of another version", "End Staylit and start it again.");
  }
  if (verdict.kind == Kind::notLoadable) {
    return cannotShow("its windows do not fit this system", kInstallAnew);
  }
  // The display may belong to a desktop that has ended meanwhile.
  if (LoginSession::outlivesSessions()) {
    Display::forgetAll();
  } else {
    Display::forget();
  }
  if (verdict.kind == Kind::silent) {
    return cannotShow("the display does not answer", "Try again when it does.");
  }
  cannotShow("the display cannot be used", "See the log for the reason.");
}

void Windowing::makeKit(const std::string& platform) {
  const auto function = platform::loadFromModule(kWindowsModule, kMakeWindowKit);
  if (!function.address)
    return tried({function.isOfAnotherBuild ? Kind::ofAnotherBuild : Kind::notLoadable, {}, {}});
  const DrivenLoop driven{loop_.descriptor(), [this] { loop_.pump(); },
                          [this] { return loop_.isStopping(); }};
  // From here on a display may block the main thread.
  guard_.emplace(loop_);
  kit_.reset(reinterpret_cast<MakeWindowKit>(function.address)(driven, platform));
  if (!kit_) {
    guard_.reset();
    return tried({});
  }
  loop_.handOver();
  for (const auto& again : std::exchange(waiting_, {}))
    again();
}

void Windowing::cannotShow(const std::string& why, const std::string& remedy) {
  const std::string text = kCannotShow + why;
  if (lastLogged_ != why) tidewell::Log::error(text + ". " + remedy);
  lastLogged_ = why;
  waiting_.clear();
  showNotification(sessionBus_, {text, remedy});
}

}  // namespace staylit
