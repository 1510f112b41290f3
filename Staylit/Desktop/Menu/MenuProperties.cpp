#include "Staylit/Desktop/Menu/MenuProperties.h"

#include <algorithm>

#include "Tidewell/ForeignText.h"

namespace staylit {
namespace {

/// No panel shows a longer label, and a name that another program chose may have any length.
constexpr std::size_t kLongestLabel = 200;

/// A single underscore would make the letter after it the item's access key.
std::string label(const std::string& title) {
  std::string doubled;
  for (const char character : tidewell::cleaned(title, kLongestLabel)) {
    doubled += character;
    if (character == '_') doubled += '_';
  }
  return doubled;
}

/// Hosts know keys by the toolkits' names for them. The name of a letter's key is the letter.
std::string keyName(const std::string& character) {
  return character == "," ? "comma" : tidewell::cleaned(character);
}

/// Screen readers say this text in place of the label, so that it has the label as well.
std::string accessibleDescription(const MenuItem& item) {
  const std::size_t begin = std::min(item.title.find_first_not_of(' '), item.title.size());
  return tidewell::cleaned(item.title.substr(begin), kLongestLabel) + " — " +
         tidewell::cleaned(item.toolTip, kLongestLabel);
}

/// GCC 12 warns, without reason, of a value that is moved from where it was just written.
void add(MenuProperties& properties, const char* name, const MenuPropertyValue& value) {
  properties.push_back({name, value});
}

}  // namespace

MenuProperties menuProperties(const MenuItem& item) {
  if (item.isSeparator) return {{"type", std::string("separator")}};
  MenuProperties properties{{"label", label(item.title)}};
  if (!item.isEnabled) add(properties, "enabled", false);
  if (!item.toolTip.empty()) {
    add(properties, "accessible-desc", accessibleDescription(item));
  }
  if (item.isToggle) {
    add(properties, "toggle-type", std::string("checkmark"));
    add(properties, "toggle-state", std::int32_t{item.isOn ? 1 : 0});
  }
  if (!item.keyEquivalent.empty()) {
    add(properties, "shortcut", MenuShortcut{"Control", keyName(item.keyEquivalent)});
  }
  return properties;
}

MenuProperties rootMenuProperties() {
  return {{"children-display", std::string("submenu")}};
}

std::optional<MenuPropertyValue> defaultMenuProperty(std::string_view name) {
  if (name == "type") return std::string("standard");
  if (name == "disposition") return std::string("normal");
  if (name == "enabled" || name == "visible") return true;
  if (name == "toggle-state") return std::int32_t{-1};
  if (name == "shortcut") return MenuShortcut{};
  for (const std::string_view text :
       {"label", "icon-name", "toggle-type", "children-display", "accessible-desc"}) {
    if (name == text) return std::string();
  }
  return std::nullopt;
}

}  // namespace staylit
