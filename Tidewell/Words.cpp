#include "Tidewell/Words.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace tidewell {
namespace {

using Given = std::vector<Words::Value>;

Words& shownWords() {
  static Words words;
  return words;
}

/// `form` with the values in the places of their names. Absent where a name is unknown or where one
/// of the first `needed` values has no place, as in a translation of another text.
std::optional<std::string> filledIn(std::string_view form, const Given& values,
                                    std::size_t needed) {
  std::string filled;
  std::vector<bool> isUsed(values.size(), false);
  for (;;) {
    const std::size_t brace = form.find_first_of("{}");
    filled += form.substr(0, brace);
    if (brace == std::string_view::npos) break;
    const std::size_t end = form.find('}', brace);
    if (form[brace] == '}' || end == std::string_view::npos) return std::nullopt;
    const std::string_view name = form.substr(brace + 1, end - brace - 1);
    const auto value = std::ranges::find(values, name, &Words::Value::name);
    if (value == values.end()) return std::nullopt;
    isUsed[static_cast<std::size_t>(value - values.begin())] = true;
    filled += value->text;
    form.remove_prefix(end + 1);
  }
  const auto last = isUsed.begin() + static_cast<std::ptrdiff_t>(needed);
  if (std::find(isUsed.begin(), last, false) != last) return std::nullopt;
  return filled;
}

}  // namespace

const Words& Words::source() {
  static const Words words;
  return words;
}

const Words& Words::shown() {
  return shownWords();
}

void Words::setTranslator(std::shared_ptr<const Translator> translator) {
  shownWords().translator_ = std::move(translator);
}

std::shared_ptr<const Translator> Words::translator() {
  return shownWords().translator_;
}

const char* Words::phrase(const char* text) const {
  // Under the empty text, a catalogue has its own description.
  const bool isTranslated = translator_ && *text != '\0';
  return isTranslated ? translator_->find(text) : text;
}

std::string Words::phrase(const char* text, std::initializer_list<Value> values) const {
  const Given given(values);
  if (auto translated = filledIn(phrase(text), given, given.size())) return *std::move(translated);
  return filledIn(text, given, 0).value_or(text);
}

std::string Words::phraseFor(std::int64_t count, const char* one, const char* many,
                             std::initializer_list<Value> values) const {
  Given given(values);
  // The form for one thing, or for none, may well do without the number.
  const std::size_t needed = given.size();
  given.push_back({"count", std::to_string(count)});
  const auto natural = static_cast<std::uint64_t>(std::max<std::int64_t>(count, 0));
  if (translator_) {
    auto translated = filledIn(translator_->find(one, many, natural), given, needed);
    if (translated) return *std::move(translated);
  }
  const char* source = count == 1 ? one : many;
  return filledIn(source, given, 0).value_or(source);
}

std::string Words::knownPhrase(const std::string& text) const {
  const char* found = phrase(text.c_str());
  return found == text.c_str() ? text : found;
}

}  // namespace tidewell
