#include "Benchmarks/Detection/JsonWriter.h"

#include <cstdio>

JsonWriter& JsonWriter::key(std::string_view name) {
  separate();
  quote(name);
  document_ += ": ";
  needsComma_ = false;
  return *this;
}

JsonWriter& JsonWriter::beginObject() {
  return begin('{');
}

JsonWriter& JsonWriter::endObject() {
  return end('}');
}

JsonWriter& JsonWriter::beginArray() {
  return begin('[');
}

JsonWriter& JsonWriter::endArray() {
  return end(']');
}

JsonWriter& JsonWriter::text(std::string_view value) {
  separate();
  quote(value);
  return *this;
}

JsonWriter& JsonWriter::number(double value) {
  separate();
  char digits[64];
  std::snprintf(digits, sizeof digits, "%.3f", value);
  document_ += digits;
  return *this;
}

JsonWriter& JsonWriter::boolean(bool value) {
  separate();
  document_ += value ? "true" : "false";
  return *this;
}

JsonWriter& JsonWriter::null() {
  separate();
  document_ += "null";
  return *this;
}

void JsonWriter::separate() {
  if (needsComma_) document_ += ",\n";
  needsComma_ = true;
}

void JsonWriter::quote(std::string_view value) {
  document_ += '"';
  for (const char character : value) {
    if (static_cast<unsigned char>(character) < 0x20) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(character));
      document_ += escape;
      continue;
    }
    if (character == '"' || character == '\\') document_ += '\\';
    document_ += character;
  }
  document_ += '"';
}

JsonWriter& JsonWriter::begin(char bracket) {
  separate();
  document_ += bracket;
  needsComma_ = false;
  return *this;
}

JsonWriter& JsonWriter::end(char bracket) {
  document_ += bracket;
  needsComma_ = true;
  return *this;
}
