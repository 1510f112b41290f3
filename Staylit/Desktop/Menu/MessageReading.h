#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace staylit {

/// Reading and answering for which sd-bus has no single call. Every function returns 0 or more, or
/// a negative errno.

/// Reads `as`.
int readTexts(sd_bus_message* message, std::vector<std::string>& texts);
/// Reads `ai`, each number once.
int readNumbers(sd_bus_message* message, std::vector<std::int32_t>& numbers);
/// Answers a call with as many `ai` as there are lists.
int replyWithNumbers(sd_bus_message* call, const std::vector<std::vector<std::int32_t>>& lists);

/// Reads the value of the entry with the given key. Returns 1 when it has read it, 0 when the entry
/// does not matter to it.
using EntryReader = std::function<int(const std::string& key)>;
/// Reads `a{sv}` and skips the entries that `read` does not read.
int readEntries(sd_bus_message* message, const EntryReader& read);
/// Reads a variant if it holds `s`, or `as`. Returns 1 when it has read one, 0 when the variant
/// holds something else.
int readTextValue(sd_bus_message* message, std::string& text);
int readTextsValue(sd_bus_message* message, std::vector<std::string>& texts);

}  // namespace staylit
