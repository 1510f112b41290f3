#include "Staylit/JsonValue.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

#include "Tidewell/Utf8.h"

namespace staylit {
namespace {

constexpr int kDeepestNesting = 32;
/// No double has a larger one.
constexpr int kLargestExponent = 10'000;

bool isDecimalDigit(char character) {
  return character >= '0' && character <= '9';
}

void appendUtf8(std::string& text, std::uint32_t codePoint) {
  const auto add = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
  const auto addRest = [&add, codePoint](int shift) { add(0x80 | ((codePoint >> shift) & 0x3F)); };
  if (codePoint < 0x80) {
    add(codePoint);
  } else if (codePoint < 0x800) {
    add(0xC0 | (codePoint >> 6));
    addRest(0);
  } else if (codePoint < 0x10000) {
    add(0xE0 | (codePoint >> 12));
    addRest(6);
    addRest(0);
  } else {
    add(0xF0 | (codePoint >> 18));
    addRest(12);
    addRest(6);
    addRest(0);
  }
}

}  // namespace

/// Takes values off the front of a text. All functions return false, or nothing, where the text
/// goes on as no JSON does.
class JsonReader {
 public:
  explicit JsonReader(std::string_view json) : rest_(json) {}

  bool readWhole(JsonValue& value) {
    if (!read(value, 0)) return false;
    skipBlanks();
    return rest_.empty();
  }

 private:
  bool read(JsonValue& value, int depth) {
    skipBlanks();
    if (rest_.empty() || depth > kDeepestNesting) return false;
    switch (rest_.front()) {
      case '{':
        return readObject(value.value_.emplace<JsonValue::Object>(), depth);
      case '[':
        return readList(value.value_.emplace<JsonValue::List>(), depth);
      case '"':
        return readText(value.value_.emplace<std::string>());
      case 't':
        value.value_ = true;
        return take("true");
      case 'f':
        value.value_ = false;
        return take("false");
      case 'n':
        return take("null");
      default:
        return readNumber(value.value_.emplace<double>());
    }
  }

  bool readObject(JsonValue::Object& members, int depth) {
    return readElements('}', [&] {
      JsonValue::Member& member = members.emplace_back();
      skipBlanks();
      if (!readText(member.key)) return false;
      skipBlanks();
      return take(":") && read(member.value, depth + 1);
    });
  }

  bool readList(JsonValue::List& elements, int depth) {
    return readElements(']', [&] { return read(elements.emplace_back(), depth + 1); });
  }

  /// What stands between a bracket, which comes next, and its partner `closing`.
  template <typename ReadElement>
  bool readElements(char closing, ReadElement readElement) {
    rest_.remove_prefix(1);
    skipBlanks();
    if (take({&closing, 1})) return true;
    while (readElement()) {
      skipBlanks();
      if (take({&closing, 1})) return true;
      if (!take(",")) return false;
    }
    return false;
  }

  bool readText(std::string& text) {
    if (!take("\"")) return false;
    while (!rest_.empty()) {
      const char first = rest_.front();
      rest_.remove_prefix(1);
      if (first == '"') return true;
      if (static_cast<unsigned char>(first) < 0x20) return false;
      if (first != '\\') {
        text += first;
      } else if (!readEscaped(text)) {
        return false;
      }
    }
    return false;
  }

  bool readEscaped(std::string& text) {
    constexpr std::string_view kEscapes = "\"\\/bfnrt";
    constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t";
    if (take("u")) return readCodePoint(text);
    if (rest_.empty()) return false;
    const std::size_t place = kEscapes.find(rest_.front());
    if (place == std::string_view::npos) return false;
    text += kMeanings[place];
    rest_.remove_prefix(1);
    return true;
  }

  bool readCodePoint(std::string& text) {
    auto unit = readUnit();
    if (!unit) return false;
    const bool isHigh = *unit >= 0xD800 && *unit < 0xDC00;
    if (isHigh && take("\\u")) {
      const auto low = readUnit();
      if (!low || *low < 0xDC00 || *low > 0xDFFF) return false;
      unit = 0x10000 + ((*unit - 0xD800) << 10) + (*low - 0xDC00);
    }
    // A surrogate without its partner is no character.
    if (*unit >= 0xD800 && *unit <= 0xDFFF) return false;
    appendUtf8(text, *unit);
    return true;
  }

  std::optional<std::uint32_t> readUnit() {
    constexpr std::string_view kDigits = "0123456789abcdef";
    constexpr std::size_t kLength = 4;
    if (rest_.size() < kLength) return std::nullopt;
    std::uint32_t unit = 0;
    for (const char digit : rest_.substr(0, kLength)) {
      const bool isUpper = digit >= 'A' && digit <= 'F';
      const std::size_t value = kDigits.find(isUpper ? static_cast<char>(digit + 32) : digit);
      if (value == std::string_view::npos) return std::nullopt;
      unit = 16 * unit + static_cast<std::uint32_t>(value);
    }
    rest_.remove_prefix(kLength);
    return unit;
  }

  /// The C++ library of Macs has no function for this that ignores the locale.
  bool readNumber(double& number) {
    const bool isNegative = take("-");
    const std::string_view whole = takeDigits();
    if (whole.empty() || (whole.front() == '0' && whole.size() > 1)) return false;
    double digits = valueOf(whole, 0);
    int exponent = 0;
    if (take(".")) {
      const std::string_view fraction = takeDigits();
      if (fraction.empty()) return false;
      digits = valueOf(fraction, digits);
      exponent = -static_cast<int>(std::min<std::size_t>(fraction.size(), kLargestExponent));
    }
    if ((take("e") || take("E")) && !takeExponent(exponent)) return false;
    number = exponent < 0 ? digits / std::pow(10.0, -exponent) : digits * std::pow(10.0, exponent);
    if (isNegative) number = -number;
    return std::isfinite(number);
  }

  bool takeExponent(int& exponent) {
    const bool isNegative = take("-");
    if (!isNegative) take("+");
    const std::string_view digits = takeDigits();
    if (digits.empty()) return false;
    const int size = static_cast<int>(std::min<double>(valueOf(digits, 0), kLargestExponent));
    exponent += isNegative ? -size : size;
    return true;
  }

  static double valueOf(std::string_view digits, double before) {
    for (const char digit : digits)
      before = 10 * before + (digit - '0');
    return before;
  }

  std::string_view takeDigits() {
    const auto end = std::ranges::find_if_not(rest_, isDecimalDigit);
    const auto length = static_cast<std::size_t>(end - rest_.begin());
    const std::string_view digits = rest_.substr(0, length);
    rest_.remove_prefix(length);
    return digits;
  }

  bool take(std::string_view expected) {
    if (!rest_.starts_with(expected)) return false;
    rest_.remove_prefix(expected.size());
    return true;
  }

  void skipBlanks() {
    rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\n\r"), rest_.size()));
  }

  std::string_view rest_;
};

std::optional<JsonValue> JsonValue::read(std::string_view json) {
  JsonValue value;
  if (!tidewell::isValidUtf8(json) || !JsonReader(json).readWhole(value)) return std::nullopt;
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
