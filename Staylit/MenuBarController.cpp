#include "Staylit/MenuBarController.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "Staylit/Prefs.h"
#include "Staylit/StatusTexts.h"
#include "Staylit/WatchList.h"
#include "Tidewell/AppCatalog.h"
#include "Tidewell/TextReading.h"
#include "Tidewell/Words.h"

namespace staylit {

using tidewell::Words;

namespace {

constexpr Size kWindowSize{460, 560};

// Only the section of ignored applications has a line that tells how many more there are.
constexpr std::size_t kBusyLimit = 8;
constexpr std::size_t kIgnoredLimit = 6;
constexpr std::size_t kAssertingLimit = 5;

struct Icon {
  std::string_view symbol;
  bool appearsDisabled;
};

constexpr Icon kHeld{"cup.and.saucer.fill", false};
constexpr Icon kNotHeld{"cup.and.saucer", true};

Icon iconOf(const EngineStatus::Holding&) {
  return kHeld;
}

Icon iconOf(const EngineStatus::Winding&) {
  return kHeld;
}

Icon iconOf(const EngineStatus::Blocked&) {
  return kNotHeld;
}

Icon iconOf(const EngineStatus::Idle&) {
  return kNotHeld;
}

Icon iconOf(const EngineStatus::Paused&) {
  return {"pause.circle", false};
}

template <typename Element>
std::span<const Element> upTo(std::size_t limit, const std::vector<Element>& all) {
  return std::span(all).first(std::min(limit, all.size()));
}

MenuItem separator() {
  MenuItem item;
  item.isSeparator = true;
  return item;
}

MenuItem header(std::string title) {
  MenuItem item;
  item.title = std::move(title);
  item.isEnabled = false;
  return item;
}

MenuItem command(std::string title, std::string keyEquivalent, MenuItem::Action action) {
  MenuItem item;
  item.title = std::move(title);
  item.keyEquivalent = std::move(keyEquivalent);
  item.action = action;
  return item;
}

MenuItem appToggle(std::string title, std::string id) {
  MenuItem item;
  item.title = std::move(title);
  item.isToggle = true;
  item.action = MenuItem::Action::toggleApp;
  item.representedObject = std::move(id);
  return item;
}

MenuItem busyItem(const tidewell::BusyApp& app, bool isIgnored) {
  MenuItem item = appToggle(rowOf(app, Words::shown()), app.id);
  item.isOn = !isIgnored;
  item.toolTip =
      // TRANSLATORS: tool tips of an application's row in the menu: what a click does.
      isIgnored ? Words::shown().phrase("Stay awake for {app} again", {{"app", app.display}})
                : Words::shown().phrase("Stop staying awake for {app}", {{"app", app.display}});
  return item;
}

void addBusy(Menu& menu, const std::vector<tidewell::BusyApp>& busyApps,
             const tidewell::TextSet& ignored) {
  if (busyApps.empty()) return;
  menu.push_back(separator());
  menu.push_back(header(Words::shown().phrase(kStayingAwakeFor)));
  for (const tidewell::BusyApp& app : upTo(kBusyLimit, busyApps)) {
    menu.push_back(busyItem(app, ignored.contains(app.id)));
  }
}

void addIgnored(Menu& menu, const tidewell::TextSet& ignored, tidewell::Text& text) {
  if (ignored.empty()) return;
  menu.push_back(separator());
  menu.push_back(header(Words::shown().phrase("Not watching")));
  std::vector<std::string> ids(ignored.begin(), ignored.end());
  std::ranges::sort(ids);
  for (const std::string& id : upTo(kIgnoredLimit, ids)) {
    const tidewell::CatalogEntry* known = tidewell::AppCatalog::lookup(id, id, text);
    menu.push_back(appToggle(known ? known->display : id, id));
  }
  if (ids.size() <= kIgnoredLimit) return;
  const auto more = static_cast<std::int64_t>(ids.size() - kIgnoredLimit);
  menu.push_back(
      header("  " + Words::shown().phraseFor(more,
                                             // TRANSLATORS: below six applications that are not
                                             // watched; "Choose Apps" is an item of the menu.
                                             "…and {count} more — see Choose Apps",
                                             "…and {count} more — see Choose Apps")));
}

/// The program of a process that is named by its number, for want of an application's name; empty
/// for every other name.
std::string programOf(std::string_view name, tidewell::ProcessTable& processes) {
  constexpr std::string_view kNumbered = "pid ";
  if (!name.starts_with(kNumbered)) return {};
  const auto pid = tidewell::wholeNumber<std::int32_t>(name.substr(kNumbered.size()));
  return pid ? std::string(processes.path(*pid)) : std::string();
}

void addAsserting(Menu& menu, const std::vector<std::string>& names,
                  tidewell::ProcessTable& processes) {
  if (names.empty()) return;
  menu.push_back(separator());
  menu.push_back(header(Words::shown().phrase(kAskedToStayAwake)));
  for (const std::string& name : upTo(kAssertingLimit, names)) {
    menu.push_back(header("  " + name));
    menu.back().toolTip = programOf(name, processes);
  }
}

void addCommands(Menu& menu, bool isPaused) {
  const Words& words = Words::shown();
  menu.push_back(separator());
  // TRANSLATORS: commands of the menu: Staylit goes on after a pause, or makes one.
  menu.push_back(command(isPaused ? words.phrase("Resume") : words.phrase("Pause"), "p",
                         MenuItem::Action::togglePause));
  MenuItem chooseApps = command(words.phrase("Choose Apps…"), "a", MenuItem::Action::openApps);
  // TRANSLATORS: the tool tip of "Choose Apps…".
  chooseApps.toolTip = words.phrase("Pick which apps may keep your Mac awake");
  menu.push_back(std::move(chooseApps));
  menu.push_back(command(words.phrase("Settings…"), ",", MenuItem::Action::openSettings));
  menu.push_back(separator());
  menu.push_back(command(words.phrase("Quit Staylit"), "q", MenuItem::Action::terminate));
}

}  // namespace

MenuBarController::MenuBarController(StaylitEngine& engine, UserInterface& userInterface,
                                     tidewell::Ports& ports)
    : engine_(engine), userInterface_(userInterface), ports_(ports) {
  // The item is made when all else is there, because it may ask for the menu at once.
  statusItem_ = userInterface_.makeStatusItem(*this);
  followStatus();
}

MenuBarController::~MenuBarController() = default;

void MenuBarController::followStatus() {
  statusSubscription_ =
      engine_.status().observe([this](const EngineStatus& next) { postRender(next); });
  postRender(engine_.status().get());
}

void MenuBarController::postRender(const EngineStatus& status) {
  ports_.mainLoop->async([controller = self_.make(), status] {
    if (controller) controller->render(status);
  });
}

void MenuBarController::render(const EngineStatus& status) {
  if (!statusItem_) return;
  statusItem_->show(appearance(status));
  MenuRows rows = menuRows(status);
  if (shownRows_ && shownRows_->areSameAs(rows)) return;
  shownRows_ = std::move(rows);
  statusItem_->menuChanged();
}

bool MenuBarController::MenuRows::areSameAs(const MenuRows& other) const {
  return status.isSameState(other.status) && busy == other.busy && asserting == other.asserting &&
         ignored == other.ignored;
}

MenuBarController::MenuRows MenuBarController::menuRows(const EngineStatus& status) {
  std::vector<std::string> busy;
  for (const tidewell::BusyApp& app : upTo(kBusyLimit, engine_.busyApps().get()))
    busy.push_back(app.id);
  std::ranges::sort(busy);
  const auto asserting = upTo(kAssertingLimit, engine_.assertingApps().get());
  return {
      status, std::move(busy), {asserting.begin(), asserting.end()}, Prefs::shared().ignoredApps()};
}

StatusItemAppearance MenuBarController::appearance(const EngineStatus& status) {
  const Icon icon = std::visit([](const auto& value) { return iconOf(value); }, status.value);
  return {std::string(icon.symbol), "Staylit", icon.appearsDisabled, summary(status)};
}

std::string MenuBarController::summary(const EngineStatus& status) {
  return status.shownSummary();
}

Menu MenuBarController::menuNeedsUpdate() {
  const tidewell::TextSet ignored = Prefs::shared().ignoredApps();
  Menu menu{header(summary(engine_.status().get()))};
  addBusy(menu, engine_.busyApps().get(), ignored);
  addIgnored(menu, ignored, *ports_.text);
  addAsserting(menu, engine_.assertingApps().get(), *ports_.processTable);
  addCommands(menu, engine_.isPaused());
  return menu;
}

void MenuBarController::perform(const MenuItem& item) {
  switch (item.action) {
    case MenuItem::Action::none:
      return;
    case MenuItem::Action::toggleApp:
      return toggleApp(item);
    case MenuItem::Action::togglePause:
      return togglePause();
    case MenuItem::Action::openApps:
      return openApps();
    case MenuItem::Action::openSettings:
      return openSettings();
    case MenuItem::Action::terminate:
      return userInterface_.terminate();
  }
}

void MenuBarController::toggleApp(const MenuItem& item) {
  if (!item.representedObject) return;
  const std::string& id = *item.representedObject;
  const bool isIgnored = Prefs::shared().ignoredApps().contains(id);
  WatchList::setWatched(id, isIgnored);
  engine_.tick();
}

void MenuBarController::togglePause() {
  engine_.setPaused(!engine_.isPaused());
}

void MenuBarController::openApps() {
  if (!appsWindow_) makeAppsWindow();
  bringToFront(appsWindow_.get());
}

void MenuBarController::openSettings() {
  if (!settingsWindow_) makeSettingsWindow();
  bringToFront(settingsWindow_.get());
}

void MenuBarController::makeAppsWindow() {
  auto view = std::make_unique<AppsView>(engine_, ports_);
  auto window =
      userInterface_.makeAppsWindow({Words::shown().phrase("Choose Apps"), kWindowSize}, *view);
  if (!window) return;
  centerOnMainScreen(*window);
  appsView_ = std::move(view);
  appsWindow_ = std::move(window);
}

void MenuBarController::makeSettingsWindow() {
  // The view is made with its window, because it reads the settings only once.
  auto view = std::make_unique<SettingsView>(engine_, ports_);
  auto window = userInterface_.makeSettingsWindow(
      {Words::shown().phrase("Staylit Settings"), kWindowSize}, *view);
  if (!window) return;
  window->center();
  settingsView_ = std::move(view);
  settingsWindow_ = std::move(window);
}

void MenuBarController::centerOnMainScreen(Window& window) {
  const std::vector<Rect> frames = userInterface_.visibleFrames();
  if (frames.empty()) return;
  const Point center = frames.front().center();
  window.setFrameOrigin({center.x - kWindowSize.width / 2, center.y - kWindowSize.height / 2});
}

void MenuBarController::bringToFront(Window* window) {
  if (!window) return;
  window->makeKeyAndOrderFront();
  userInterface_.activate();
}

}  // namespace staylit
