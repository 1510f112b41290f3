#include "Staylit/JsonValue.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <utility>

namespace staylit {
namespace {

constexpr std::size_t kDeepestNesting = 32;

}  // namespace

/// Builds a value of what the library finds in a text. Each function returns whether the library is
/// to go on.
class JsonReader : public nlohmann::json_sax<nlohmann::json> {
 public:
  explicit JsonReader(JsonValue& value) : whole_(value) {}

  bool null() override { return add(std::monostate()); }
  bool boolean(bool flag) override { return add(flag); }
  bool number_integer(std::int64_t number) override { return add(static_cast<double>(number)); }
  bool number_unsigned(std::uint64_t number) override { return add(static_cast<double>(number)); }
  bool number_float(double number, const std::string&) override { return add(number); }
  bool string(std::string& text) override { return add(std::move(text)); }
  bool binary(binary_t&) override { return false; }

  bool start_object(std::size_t) override { return open(JsonValue::Object()); }
  bool key(std::string& name) override {
    std::get<JsonValue::Object>(open_.back()->value_).push_back({std::move(name), {}});
    return true;
  }
  bool end_object() override { return close(); }
  bool start_array(std::size_t) override { return open(JsonValue::List()); }
  bool end_array() override { return close(); }

  bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception&) override {
    return false;
  }

 private:
  /// Where the next value belongs. While a list or an object is open, nothing is added to the ones
  /// around it, so that its address stays.
  JsonValue& next() {
    if (open_.empty()) return whole_;
    JsonValue::Value& around = open_.back()->value_;
    if (auto* list = std::get_if<JsonValue::List>(&around)) return list->emplace_back();
    return std::get<JsonValue::Object>(around).back().value;
  }

  bool add(JsonValue::Value value) {
    next().value_ = std::move(value);
    return true;
  }

  bool open(JsonValue::Value empty) {
    if (open_.size() == kDeepestNesting) return false;
    JsonValue& value = next();
    value.value_ = std::move(empty);
    open_.push_back(&value);
    return true;
  }

  bool close() {
    open_.pop_back();
    return true;
  }

  JsonValue& whole_;
  std::vector<JsonValue*> open_;  ///< From the outermost to the innermost.
};

std::optional<JsonValue> JsonValue::read(std::string_view json) {
  JsonValue value;
  JsonReader reader(value);
  if (!nlohmann::json::sax_parse(json, &reader)) return std::nullopt;
  return value;
}

std::optional<double> JsonValue::number() const {
  const double* number = std::get_if<double>(&value_);
  return number ? std::optional(*number) : std::nullopt;
}

std::optional<bool> JsonValue::flag() const {
  const bool* flag = std::get_if<bool>(&value_);
  return flag ? std::optional(*flag) : std::nullopt;
}

const JsonValue* JsonValue::member(std::string_view key) const {
  const Object* members = std::get_if<Object>(&value_);
  if (!members) return nullptr;
  const auto found = std::ranges::find(*members, key, &Member::key);
  return found == members->end() ? nullptr : &found->value;
}

}  // namespace staylit
