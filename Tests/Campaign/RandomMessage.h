#pragma once

#include <systemd/sd-bus.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Tests/Campaign/RandomText.h"

namespace staylit::campaign {

/// The length of the complete type at the beginning of `signature`; 0 when there is none.
inline std::size_t completeType(std::string_view signature) {
  if (signature.empty()) return 0;
  const char first = signature[0];
  if (first == 'a') {
    const std::size_t inner = completeType(signature.substr(1));
    return inner == 0 ? 0 : inner + 1;
  }
  if (first != '(' && first != '{') return 1;
  std::size_t at = 1;
  while (at < signature.size() && signature[at] != ')' && signature[at] != '}') {
    const std::size_t inner = completeType(signature.substr(at));
    if (inner == 0) return 0;
    at += inner;
  }
  return at + 1;
}

/// A signature that somebody might send instead of the right one.
inline std::string randomSignature(Random& random) {
  static constexpr std::string_view kSignatures[] = {
      "",      "s",         "i",        "u",         "b",         "d",        "o",
      "g",     "v",         "as",       "ao",        "ai",        "ay",       "av",
      "aas",   "(ss)",      "a(ss)",    "a(ssssuu)", "a(sssuu)",  "(ssssuu)", "a{sv}",
      "a{ss}", "a{sa{sv}}", "a(so)",    "a(isvu)",   "iias",      "aias",     "is",
      "isvu",  "a{sv}s",    "sava{sv}", "asa{sv}",   "(iiay)",    "aai",      "t",
      "x",     "n",         "y",        "sa{sv}as",  "a(ia{sv})", "a(sx)",    "a(sssdddd)"};
  return std::string(kSignatures[below(random, std::size(kSignatures))]);
}

/// A text that the readers look for, so that they do not pass over everything.
inline std::string knownText(Random& random) {
  static constexpr std::string_view kTexts[] = {"idle",
                                                "sleep",
                                                "idle:sleep",
                                                "block",
                                                "delay",
                                                "Staylit",
                                                "OnBattery",
                                                "Percentage",
                                                "clicked",
                                                "opened",
                                                "closed",
                                                "label",
                                                "pause",
                                                "settings",
                                                "quit",
                                                "choose-apps",
                                                "activation-token",
                                                "com.staylit.display",
                                                "DISPLAY=host:0",
                                                "DISPLAY=:99999999",
                                                "WAYLAND_DISPLAY=/etc/passwd",
                                                "user session inhibited",
                                                "org.example",
                                                "State",
                                                "holding",
                                                "Summary",
                                                "Since",
                                                "Names",
                                                "Services",
                                                "Busy",
                                                "handle-lid-switch:handle-power-key"};
  return std::string(kTexts[below(random, std::size(kTexts))]);
}

inline std::string randomText(Random& random) {
  if (below(random, 200) == 0) return std::string(20'000, 'x');
  return below(random, 2) == 0 ? knownText(random) : hostileText(random);
}

/// Appends a random value of a type that holds no others.
inline void appendBasic(sd_bus_message* message, char type, Random& random) {
  const std::uint64_t number = below(random, 3) == 0 ? random() : below(random, 8);
  const auto byte = static_cast<std::uint8_t>(number);
  const auto half = static_cast<std::uint16_t>(number);
  const auto word = static_cast<std::uint32_t>(number);
  switch (type) {
    case 's':
      sd_bus_message_append(message, "s", randomText(random).c_str());
      break;
    case 'o':
      sd_bus_message_append(message, "o", below(random, 2) == 0 ? "/" : "/org/example/Inhibitor1");
      break;
    case 'g':
      sd_bus_message_append(message, "g", "a{sv}");
      break;
    case 'b':
      sd_bus_message_append(message, "b", static_cast<int>(number & 1));
      break;
    case 'y':
      sd_bus_message_append_basic(message, type, &byte);
      break;
    case 'n':
    case 'q':
      sd_bus_message_append_basic(message, type, &half);
      break;
    case 'i':
    case 'u':
      sd_bus_message_append_basic(message, type, &word);
      break;
    default:
      sd_bus_message_append_basic(message, type, &number);
  }
}

/// The signature of what a random variant holds: one complete type.
inline std::string signatureInVariant(Random& random, int depth) {
  const std::string signature = depth < 4 ? randomSignature(random) : "s";
  const bool isOneType = !signature.empty() && completeType(signature) == signature.size();
  return isOneType ? signature : "s";
}

/// Appends random values of `signature`. A value that cannot be appended is left out. Then the
/// message has another shape than its reader expects, which is welcome.
inline void appendRandom(sd_bus_message* message, std::string_view signature, Random& random,
                         int depth = 0) {
  while (!signature.empty()) {
    const std::size_t length = completeType(signature);
    if (length == 0) return;
    const std::string type(signature.substr(0, length));
    signature.remove_prefix(length);
    std::string inner = type.substr(1);
    char container = type[0];
    std::size_t count = 1;
    if (type[0] == 'v') {
      inner = signatureInVariant(random, depth);
    } else if (type[0] == 'a') {
      count = below(random, depth == 0 && below(random, 100) == 0 ? 300 : 4);
    } else if (type[0] == '(' || type[0] == '{') {
      container = type[0] == '(' ? 'r' : 'e';
      inner.pop_back();
    } else {
      appendBasic(message, type[0], random);
      continue;
    }
    if (sd_bus_message_open_container(message, container, inner.c_str()) < 0) return;
    for (; count > 0; --count)
      appendRandom(message, inner, random, depth + 1);
    sd_bus_message_close_container(message);
  }
}

}  // namespace staylit::campaign
