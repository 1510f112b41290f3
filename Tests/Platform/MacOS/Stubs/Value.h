#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace platform::stub {

struct Value;
using List = std::vector<Value>;
using Dictionary = std::vector<std::pair<Value, Value>>;

/// An object of a type that nobody reads, such as a date.
struct Opaque {};

/// What an object of the stubs will hold. A test describes the system's answers with it.
struct Value {
  Value(Opaque opaque) : content(opaque) {}                         // NOLINT: described as it is
  Value(bool truth) : content(truth) {}                             // NOLINT
  Value(int number) : content(std::int64_t{number}) {}              // NOLINT
  Value(std::int64_t number) : content(number) {}                   // NOLINT
  Value(double number) : content(number) {}                         // NOLINT
  Value(const char16_t* text) : content(std::u16string(text)) {}    // NOLINT
  Value(std::u16string text) : content(std::move(text)) {}          // NOLINT
  Value(List list) : content(std::move(list)) {}                    // NOLINT
  Value(Dictionary dictionary) : content(std::move(dictionary)) {}  // NOLINT

  std::variant<Opaque, bool, std::int64_t, double, std::u16string, List, Dictionary> content;
};

}  // namespace platform::stub
