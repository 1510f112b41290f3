#include "Staylit/Desktop/Display/Windowing.h"

#include <utility>

#include "Platform/Linux/Modules/Modules.h"
#include "Staylit/Desktop/Display/Display.h"
#include "Staylit/Desktop/Session/DesktopNotification.h"
#include "Staylit/Desktop/Session/LoginSession.h"
#include "Tidewell/Log.h"
#include "Tidewell/Words.h"

namespace staylit {
namespace {

using Kind = DisplayTrial::Verdict::Kind;
using tidewell::toBePhrased;
using tidewell::Words;

constexpr const char* kInstall = toBePhrased("Please install the package staylit-desktop.");
constexpr const char* kInstallAnew =
    toBePhrased("Please install the package staylit-desktop anew.");

std::string cannotShowBecause(const char* why, const Words& words) {
  // TRANSLATORS: the title of a notification. The reason begins in lower case.
  return words.phrase("Staylit cannot show a window: {reason}", {{"reason", words.phrase(why)}});
}

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
  return obstacle ? cannotShowBecause(obstacle->why, Words::source()) : "";
}

std::optional<Windowing::Obstacle> Windowing::findObstacle() {
  if (!Display::isKnown()) Display::learnFromServiceManager(sessionBus_);
  if (!Display::isKnown()) {
    // TRANSLATORS: the reasons follow "Staylit cannot show a window: "; the sentences after them
    // are the text of the same notification.
    return Obstacle{toBePhrased("there is no display"),
                    toBePhrased("Start Staylit within a desktop session.")};
  }
  if (platform::moduleFile(kWindowsModule).empty()) {
    return Obstacle{toBePhrased("its windows are not installed"), kInstall};
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
    return cannotShow(toBePhrased("its windows are of another version"),
                      toBePhrased("End Staylit and start it again."));
  }
  if (verdict.kind == Kind::notLoadable) {
    return cannotShow(toBePhrased("its windows do not fit this system"), kInstallAnew);
  }
  // The display may belong to a desktop that has ended meanwhile.
  if (LoginSession::outlivesSessions()) {
    Display::forgetAll();
  } else {
    Display::forget();
  }
  if (verdict.kind == Kind::silent) {
    return cannotShow(toBePhrased("the display does not answer"),
                      // TRANSLATORS: "it" is the display.
                      toBePhrased("Try again when it does."));
  }
  cannotShow(toBePhrased("the display cannot be used"), toBePhrased("See the log for the reason."));
}

void Windowing::makeKit(const std::string& platform) {
  const auto function = platform::loadFromModule(kWindowsModule, kMakeWindowKit);
  if (!function.address)
    return tried({function.isOfAnotherBuild ? Kind::ofAnotherBuild : Kind::notLoadable, {}, {}});
  const DrivenLoop driven{loop_.descriptor(), [this] { loop_.pump(); },
                          [this] { return loop_.isStopping(); }};
  // From here on a display may block the main thread.
  guard_.emplace(loop_);
  kit_.reset(
      reinterpret_cast<MakeWindowKit>(function.address)(driven, platform, Words::translator()));
  if (!kit_) {
    guard_.reset();
    return tried({});
  }
  loop_.handOver();
  for (const auto& again : std::exchange(waiting_, {}))
    again();
}

void Windowing::cannotShow(const char* why, const char* remedy) {
  if (lastLogged_ != why) {
    tidewell::Log::error(cannotShowBecause(why, Words::source()) + ". " + remedy);
  }
  lastLogged_ = why;
  waiting_.clear();
  showNotification(sessionBus_,
                   {cannotShowBecause(why, Words::shown()), Words::shown().phrase(remedy)});
}

}  // namespace staylit
