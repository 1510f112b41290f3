#include "Staylit/Desktop/MessageReading.h"

#include "Platform/Linux/Bus/BusMessage.h"

namespace staylit {

int readTexts(sd_bus_message* message, std::vector<std::string>& texts) {
  int result = sd_bus_message_enter_container(message, 'a', "s");
  const char* text = nullptr;
  while (result >= 0 && (result = sd_bus_message_read(message, "s", &text)) > 0)
    texts.emplace_back(text);
  return result < 0 ? result : sd_bus_message_exit_container(message);
}

int readNumbers(sd_bus_message* message, std::vector<std::int32_t>& numbers) {
  int result = sd_bus_message_enter_container(message, 'a', "i");
  std::int32_t number = 0;
  while (result >= 0 && (result = sd_bus_message_read(message, "i", &number)) > 0)
    numbers.push_back(number);
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

int readTextEntry(sd_bus_message* message, const std::string& key, std::string& text) {
  int result = sd_bus_message_enter_container(message, 'a', "{sv}");
  while (result >= 0 && (result = sd_bus_message_enter_container(message, 'e', "sv")) > 0) {
    const char* name = nullptr;
    const char* type = nullptr;
    const char* value = nullptr;
    if ((result = sd_bus_message_read(message, "s", &name)) < 0) break;
    if ((result = sd_bus_message_peek_type(message, nullptr, &type)) < 0) break;
    if (key == name && std::string(type) == "s") {
      result = sd_bus_message_read(message, "v", "s", &value);
      if (result >= 0) text = value;
    } else {
      result = sd_bus_message_skip(message, "v");
    }
    if (result >= 0) result = sd_bus_message_exit_container(message);
  }
  return result < 0 ? result : sd_bus_message_exit_container(message);
}

}  // namespace staylit
