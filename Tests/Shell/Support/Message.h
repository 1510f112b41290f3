#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace staylit::testing {

/// What a message holds, one value after the other, as text that a person can compare: numbers and
/// flags bare, texts in quotes, lists in brackets, structures in parentheses, bytes only counted.
inline std::string textOf(sd_bus_message* message) {
  std::string all;
  char type = 0;
  const char* contents = nullptr;
  while (sd_bus_message_peek_type(message, &type, &contents) > 0) {
    if (!all.empty()) all += " ";
    if (type == 'a' && std::string(contents) == "y") {
      const void* bytes = nullptr;
      std::size_t size = 0;
      sd_bus_message_read_array(message, 'y', &bytes, &size);
      all += "<" + std::to_string(size) + ">";
    } else if (type == 'a' || type == 'r' || type == 'e' || type == 'v') {
      sd_bus_message_enter_container(message, type, contents);
      const std::string inner = textOf(message);
      sd_bus_message_exit_container(message);
      all += type == 'a' ? "[" + inner + "]" : type == 'r' ? "(" + inner + ")" : inner;
    } else if (type == 's' || type == 'o' || type == 'g') {
      const char* text = nullptr;
      sd_bus_message_read_basic(message, type, &text);
      all += "'" + std::string(text) + "'";
    } else if (type == 'b') {
      int flag = 0;
      sd_bus_message_read_basic(message, type, &flag);
      all += flag != 0 ? "true" : "false";
    } else if (type == 'x') {
      std::int64_t number = 0;
      sd_bus_message_read_basic(message, type, &number);
      all += std::to_string(number);
    } else if (type == 'd') {
      double number = 0;
      sd_bus_message_read_basic(message, type, &number);
      std::ostringstream text;
      text << number;
      all += text.str();
    } else {
      std::int32_t number = 0;
      sd_bus_message_read_basic(message, type, &number);
      all += std::to_string(number);
    }
  }
  return all;
}

}  // namespace staylit::testing
