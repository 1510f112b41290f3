#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace staylit {

/// A value that was read from JSON (RFC 8259). Values only; safe from any thread.
class JsonValue {
 public:
  struct Member;
  using List = std::vector<JsonValue>;
  using Object = std::vector<Member>;

  /// Absent when `json` is anything else than one whole value in valid UTF-8, when values nest
  /// deeper than 32 levels, or when a number is beyond what a double can hold.
  [[nodiscard]] static std::optional<JsonValue> read(std::string_view json);

  // Each of these is absent or null when the value is of another type.
  [[nodiscard]] const std::string* text() const { return std::get_if<std::string>(&value_); }
  [[nodiscard]] std::optional<double> number() const;
  [[nodiscard]] std::optional<bool> flag() const;
  [[nodiscard]] const List* list() const { return std::get_if<List>(&value_); }
  /// The value under `key`: the first where there are several.
  [[nodiscard]] const JsonValue* member(std::string_view key) const;

 private:
  friend class JsonReader;
  using Value = std::variant<std::monostate, bool, double, std::string, List, Object>;

  Value value_;  ///< `std::monostate` is null.
};

struct JsonValue::Member {
  std::string key;
  JsonValue value;
};

}  // namespace staylit
