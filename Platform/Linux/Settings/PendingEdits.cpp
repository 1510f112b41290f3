#include "Platform/Linux/Settings/PendingEdits.h"

#include <utility>

namespace platform {
namespace {

using tidewell::PropertyDictionary;
using tidewell::PropertyValue;

std::optional<PropertyValue> valueIn(const PropertyDictionary& file, std::string_view key) {
  const auto found = file.find(key);
  return found == file.end() ? std::nullopt : std::optional(found->second);
}

/// A "nan" is not equal to itself, but it is no change either.
bool isSame(const std::optional<PropertyValue>& left, const std::optional<PropertyValue>& right) {
  const double* one = left ? std::get_if<double>(&*left) : nullptr;
  const double* other = right ? std::get_if<double>(&*right) : nullptr;
  const bool areNeitherNumbers = one && other && *one != *one && *other != *other;
  return areNeitherNumbers || left == right;
}

}  // namespace

const PropertyValue* PendingEdits::find(std::string_view key) const {
  const auto found = edits_.find(key);
  return found == edits_.end() ? nullptr : &found->second.value;
}

void PendingEdits::set(std::string_view key, PropertyValue value, const PropertyDictionary* file) {
  const std::optional<PropertyValue> before = file ? valueIn(*file, key) : std::nullopt;
  if (file && isSame(before, value) && !find(key)) return;
  edits_.insert_or_assign(std::string(key),
                          Edit{std::move(value), file != nullptr, before, ++last_});
}

void PendingEdits::follow(const PropertyDictionary& file, Absence absence) {
  for (auto entry = edits_.begin(); entry != edits_.end();) {
    const std::optional<PropertyValue> now = valueIn(file, entry->first);
    Edit& edit = entry->second;
    if (edit.knowsFile && !now && absence == Absence::meansNothing) {
      ++entry;
      continue;
    }
    if (edit.knowsFile && !isSame(edit.before, now)) {
      entry = edits_.erase(entry);
      continue;
    }
    edit.knowsFile = true;
    edit.before = now;
    ++entry;
  }
}

void PendingEdits::settle(const PendingEdits& taken, const PropertyDictionary& file,
                          Absence absence) {
  for (const auto& [key, edit] : taken.edits_) {
    const auto found = edits_.find(key);
    if (found == edits_.end()) continue;
    if (found->second.number == edit.number) {
      edits_.erase(found);
      continue;
    }
    found->second.knowsFile = true;
    found->second.before = valueIn(file, key);
  }
  follow(file, absence);
}

PropertyDictionary PendingEdits::values() const {
  PropertyDictionary values;
  for (const auto& [key, edit] : edits_)
    values.emplace(key, edit.value);
  return values;
}

}  // namespace platform
