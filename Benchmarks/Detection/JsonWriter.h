#pragma once

#include <string>
#include <string_view>

/// Writes one JSON document piece by piece. Whoever uses it keeps the order right: a key before
/// each value within an object, every begin with its end.
class JsonWriter {
 public:
  JsonWriter& key(std::string_view name);
  JsonWriter& beginObject();
  JsonWriter& endObject();
  JsonWriter& beginArray();
  JsonWriter& endArray();

  JsonWriter& text(std::string_view value);
  /// Rounded to thousandths.
  JsonWriter& number(double value);
  JsonWriter& boolean(bool value);
  JsonWriter& null();

  [[nodiscard]] const std::string& document() const { return document_; }

 private:
  void separate();
  void quote(std::string_view value);
  JsonWriter& begin(char bracket);
  JsonWriter& end(char bracket);

  std::string document_;
  bool needsComma_ = false;
};
