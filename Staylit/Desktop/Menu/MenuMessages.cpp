#include "Staylit/Desktop/Menu/MenuMessages.h"

#include <algorithm>
#include <cstdint>
#include <set>

#include "Platform/Linux/Bus/BusHandles.h"

namespace staylit {
namespace {

int appendValue(sd_bus_message* message, const std::string& text) {
  return sd_bus_message_append(message, "v", "s", text.c_str());
}

int appendValue(sd_bus_message* message, bool flag) {
  return sd_bus_message_append(message, "v", "b", flag ? 1 : 0);
}

int appendValue(sd_bus_message* message, std::int32_t number) {
  return sd_bus_message_append(message, "v", "i", number);
}

/// Appends a list of at most one shortcut.
int appendValue(sd_bus_message* message, const MenuShortcut& keys) {
  int result = sd_bus_message_open_container(message, 'v', "aas");
  if (result >= 0) result = sd_bus_message_open_container(message, 'a', "as");
  if (result >= 0 && !keys.empty()) {
    result = sd_bus_message_open_container(message, 'a', "s");
    for (const std::string& key : keys) {
      if (result >= 0) result = sd_bus_message_append(message, "s", key.c_str());
    }
    if (result >= 0) result = sd_bus_message_close_container(message);
  }
  if (result >= 0) result = sd_bus_message_close_container(message);
  return result < 0 ? result : sd_bus_message_close_container(message);
}

}  // namespace

int appendVariant(sd_bus_message* message, const MenuPropertyValue& value) {
  return std::visit([message](const auto& held) { return appendValue(message, held); }, value);
}

int appendProperties(sd_bus_message* message, const MenuProperties& properties,
                     const std::vector<std::string>& names) {
  int result = sd_bus_message_open_container(message, 'a', "{sv}");
  for (const MenuProperty& property : properties) {
    const bool wanted = names.empty() || std::ranges::find(names, property.name) != names.end();
    if (!wanted || result < 0) continue;
    result = sd_bus_message_open_container(message, 'e', "sv");
    if (result >= 0) result = sd_bus_message_append(message, "s", property.name);
    if (result >= 0) result = appendVariant(message, property.value);
    if (result >= 0) result = sd_bus_message_close_container(message);
  }
  return result < 0 ? result : sd_bus_message_close_container(message);
}

int appendUpdated(sd_bus_message* message, const std::vector<MenuLayout::ItemChange>& items) {
  int result = sd_bus_message_open_container(message, 'a', "(ia{sv})");
  for (const MenuLayout::ItemChange& item : items) {
    if (item.updated.empty() || result < 0) continue;
    result = sd_bus_message_open_container(message, 'r', "ia{sv}");
    if (result >= 0) result = sd_bus_message_append(message, "i", item.id);
    if (result >= 0) result = appendProperties(message, item.updated, {});
    if (result >= 0) result = sd_bus_message_close_container(message);
  }
  return result < 0 ? result : sd_bus_message_close_container(message);
}

int appendRemoved(sd_bus_message* message, const std::vector<MenuLayout::ItemChange>& items) {
  int result = sd_bus_message_open_container(message, 'a', "(ias)");
  for (const MenuLayout::ItemChange& item : items) {
    if (item.removed.empty() || result < 0) continue;
    result = sd_bus_message_open_container(message, 'r', "ias");
    if (result >= 0) result = sd_bus_message_append(message, "i", item.id);
    if (result >= 0) result = sd_bus_message_open_container(message, 'a', "s");
    for (const char* name : item.removed) {
      if (result >= 0) result = sd_bus_message_append(message, "s", name);
    }
    if (result >= 0) result = sd_bus_message_close_container(message);
    if (result >= 0) result = sd_bus_message_close_container(message);
  }
  return result < 0 ? result : sd_bus_message_close_container(message);
}

int readNumbers(sd_bus_message* message, std::vector<std::int32_t>& numbers) {
  int result = sd_bus_message_enter_container(message, 'a', "i");
  std::int32_t number = 0;
  std::set<std::int32_t> seen;
  while (result >= 0 && (result = sd_bus_message_read(message, "i", &number)) > 0) {
    if (seen.insert(number).second) numbers.push_back(number);
  }
  return result < 0 ? result : sd_bus_message_exit_container(message);
}

int replyWithNumbers(sd_bus_message* call, const std::vector<std::vector<std::int32_t>>& lists) {
  sd_bus_message* raw = nullptr;
  int result = sd_bus_message_new_method_return(call, &raw);
  const platform::BusMessage reply(raw);
  for (const std::vector<std::int32_t>& list : lists) {
    if (result < 0) return result;
    result = sd_bus_message_append_array(raw, 'i', list.data(), list.size() * sizeof list[0]);
  }
  return result < 0 ? result : sd_bus_send(nullptr, raw, nullptr);
}

}  // namespace staylit
