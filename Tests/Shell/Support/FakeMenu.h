#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Staylit/UserInterface.h"

namespace staylit::testing {

/// A menu with the items that a test sets. It remembers which items were chosen.
class FakeMenu : public MenuDelegate {
 public:
  Menu menu;
  std::vector<MenuItem> performed;
  int asked = 0;

  Menu menuNeedsUpdate() override {
    ++asked;
    return menu;
  }
  void perform(const MenuItem& item) override { performed.push_back(item); }

  [[nodiscard]] std::vector<std::string> performedTitles() const {
    std::vector<std::string> titles;
    for (const MenuItem& item : performed)
      titles.push_back(item.title);
    return titles;
  }
};

inline MenuItem header(std::string title) {
  MenuItem item;
  item.title = std::move(title);
  item.isEnabled = false;
  return item;
}

inline MenuItem separator() {
  MenuItem item;
  item.isSeparator = true;
  return item;
}

inline MenuItem appItem(std::string title, std::string id, bool isOn) {
  MenuItem item;
  item.title = std::move(title);
  item.isToggle = true;
  item.isOn = isOn;
  item.action = MenuItem::Action::toggleApp;
  item.representedObject = std::move(id);
  return item;
}

inline MenuItem command(std::string title, std::string key, MenuItem::Action action) {
  MenuItem item;
  item.title = std::move(title);
  item.keyEquivalent = std::move(key);
  item.action = action;
  return item;
}

/// A status line, one application and two commands.
inline Menu smallMenu() {
  return {header("Awake for Aider"),
          separator(),
          appItem("Aider — 50% CPU", "aider", true),
          separator(),
          command("Pause", "p", MenuItem::Action::togglePause),
          command("Quit Staylit", "q", MenuItem::Action::terminate)};
}

}  // namespace staylit::testing
