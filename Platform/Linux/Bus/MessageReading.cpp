#include "Platform/Linux/Bus/MessageReading.h"

#include <string_view>

namespace platform {
namespace {

/// Whether a variant of that type comes next.
bool holds(sd_bus_message* message, std::string_view wanted) {
  const char* type = nullptr;
  return sd_bus_message_peek_type(message, nullptr, &type) > 0 && type && wanted == type;
}

int readList(sd_bus_message* message, const char* type, std::vector<std::string>& texts) {
  int result = sd_bus_message_enter_container(message, 'a', type);
  const char* text = nullptr;
  while (result >= 0 && (result = sd_bus_message_read(message, type, &text)) > 0)
    texts.emplace_back(text);
  return result < 0 ? result : sd_bus_message_exit_container(message);
}

}  // namespace

int readTexts(sd_bus_message* message, std::vector<std::string>& texts) {
  return readList(message, "s", texts);
}

int readPaths(sd_bus_message* message, std::vector<std::string>& paths) {
  return readList(message, "o", paths);
}

int readEntries(sd_bus_message* message, const EntryReader& read) {
  int result = sd_bus_message_enter_container(message, 'a', "{sv}");
  while (result >= 0 && (result = sd_bus_message_enter_container(message, 'e', "sv")) > 0) {
    const char* key = nullptr;
    if ((result = sd_bus_message_read(message, "s", &key)) < 0) break;
    result = read(key);
    if (result == 0) result = sd_bus_message_skip(message, "v");
    if (result >= 0) result = sd_bus_message_exit_container(message);
  }
  return result < 0 ? result : sd_bus_message_exit_container(message);
}

int readTextValue(sd_bus_message* message, std::string& text) {
  if (!holds(message, "s")) return 0;
  const char* value = nullptr;
  const int result = sd_bus_message_read(message, "v", "s", &value);
  if (result >= 0) text = value;
  return result < 0 ? result : 1;
}

int readTextsValue(sd_bus_message* message, std::vector<std::string>& texts) {
  if (!holds(message, "as")) return 0;
  int result = sd_bus_message_enter_container(message, 'v', "as");
  if (result >= 0) result = readTexts(message, texts);
  if (result >= 0) result = sd_bus_message_exit_container(message);
  return result < 0 ? result : 1;
}

}  // namespace platform
