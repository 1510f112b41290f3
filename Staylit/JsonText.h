#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace staylit {

/// Writes JSON (RFC 8259) on one line. Values only; nothing here is shared or fails.

/// A text in quotes. What is not valid UTF-8 in it becomes U+FFFD, and every character escaped that
/// JSON or a terminal could take amiss: quotes, backslashes and control characters.
[[nodiscard]] std::string jsonText(std::string_view text);

/// With one digit behind the point, whatever the locale; null where there is no such number.
[[nodiscard]] std::string jsonDecimal(double value);

/// Elements that are JSON already.
[[nodiscard]] std::string jsonList(const std::vector<std::string>& elements);

/// An object whose members stand in the order in which they were added. A key must be added once
/// only.
class JsonObject {
 public:
  /// `json` is a value that is JSON already.
  JsonObject& add(std::string_view key, std::string_view json);
  JsonObject& addText(std::string_view key, std::string_view text);
  JsonObject& addNumber(std::string_view key, std::int64_t number);
  JsonObject& addFlag(std::string_view key, bool flag);

  [[nodiscard]] std::string text() const { return "{" + members_ + "}"; }

 private:
  std::string members_;
};

}  // namespace staylit
