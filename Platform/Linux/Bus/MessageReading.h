#pragma once

#include <systemd/sd-bus.h>

#include <functional>
#include <string>
#include <vector>

namespace platform {

/// Readings for which sd-bus has no single call. Every function returns 0 or more, or a negative
/// errno. After a failure, what the function has filled in so far means nothing.

/// Reads `as`.
int readTexts(sd_bus_message* message, std::vector<std::string>& texts);
/// Reads `ao`.
int readPaths(sd_bus_message* message, std::vector<std::string>& paths);

/// Gets the key of an entry and reads its value. Returns 1 when it has read the value, 0 when it
/// does not want it, or a negative errno.
using EntryReader = std::function<int(const std::string& key)>;
/// Reads `a{sv}` and skips the entries that `read` does not read.
int readEntries(sd_bus_message* message, const EntryReader& read);
/// Reads a variant that holds `s`. Returns 1 when it has read the text, 0 when the variant holds
/// something else.
int readTextValue(sd_bus_message* message, std::string& text);
/// Does the same with a variant that holds `as`.
int readTextsValue(sd_bus_message* message, std::vector<std::string>& texts);

}  // namespace platform
