#pragma once

#include <optional>
#include <string>
#include <vector>

namespace staylit {

/// One line of the status item's menu, as data.
struct MenuItem {
  enum class Action { none, toggleApp, togglePause, openApps, openSettings, terminate };

  std::string title;  ///< Empty for a separator.
  bool isSeparator = false;
  bool isEnabled = true;  ///< A header is an item that has no action and is not enabled.
  bool isOn = false;      ///< Whether the item has a check mark.
  /// Whether the item can be on and off at all, so that a host can leave room for a mark.
  bool isToggle = false;
  std::string toolTip;        ///< Empty for none.
  std::string keyEquivalent;  ///< One lower-case character, for use with the system's command key.
  Action action = Action::none;
  std::optional<std::string> representedObject;  ///< What the action is about.

  friend bool operator==(const MenuItem&, const MenuItem&) = default;
};

using Menu = std::vector<MenuItem>;

}  // namespace staylit
