#include "Staylit/JsonText.h"

#include <array>
#include <cmath>
#include <cstdio>

#include "Tidewell/ForeignText.h"

namespace staylit {
namespace {

std::string escaped(unsigned char control) {
  std::array<char, 8> text{};
  std::snprintf(text.data(), text.size(), "\\u%04x", unsigned{control});
  return text.data();
}

}  // namespace

std::string jsonText(std::string_view text) {
  std::string json = "\"";
  for (const char character : tidewell::wellFormed(text)) {
    const auto byte = static_cast<unsigned char>(character);
    if (character == '"' || character == '\\') json += '\\';
    if (byte < 0x20 || byte == 0x7F) {
      json += escaped(byte);
    } else {
      json += character;
    }
  }
  return json + "\"";
}

std::string jsonDecimal(double value) {
  // Beyond that a double has no digit behind its point.
  constexpr double kLargest = 1e14;
  if (!std::isfinite(value) || std::abs(value) > kLargest) return "null";
  const std::int64_t tenths = std::llround(value * 10);
  const std::int64_t size = tenths < 0 ? -tenths : tenths;
  return (tenths < 0 ? "-" : "") + std::to_string(size / 10) + "." + std::to_string(size % 10);
}

std::string jsonList(const std::vector<std::string>& elements) {
  std::string json = "[";
  for (const std::string& element : elements) {
    if (json.size() > 1) json += ",";
    json += element;
  }
  return json + "]";
}

JsonObject& JsonObject::add(std::string_view key, std::string_view json) {
  if (!members_.empty()) members_ += ",";
  members_ += jsonText(key) + ":" + std::string(json);
  return *this;
}

JsonObject& JsonObject::addText(std::string_view key, std::string_view text) {
  return add(key, jsonText(text));
}

JsonObject& JsonObject::addNumber(std::string_view key, std::int64_t number) {
  return add(key, std::to_string(number));
}

JsonObject& JsonObject::addFlag(std::string_view key, bool flag) {
  return add(key, flag ? "true" : "false");
}

}  // namespace staylit
