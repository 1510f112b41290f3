#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <string>
#include <vector>

namespace staylit {

/// What sd-bus has no single call for. All answer 0 or more, or a negative errno.

/// Reads `as`.
int readTexts(sd_bus_message* message, std::vector<std::string>& texts);
/// Reads `ai`.
int readNumbers(sd_bus_message* message, std::vector<std::int32_t>& numbers);
/// Answers a call with as many `ai` as there are lists.
int replyWithNumbers(sd_bus_message* call, const std::vector<std::vector<std::int32_t>>& lists);
/// Reads `a{sv}` and gives the text of the entry `key`; empty when there is none.
int readTextEntry(sd_bus_message* message, const std::string& key, std::string& text);

}  // namespace staylit
