#include "Platform/Linux/Applications/DesktopEntry.h"

#include <algorithm>
#include <cstddef>

#include "Tidewell/ForeignText.h"
#include "Tidewell/TextReading.h"

namespace platform {
namespace {

std::string_view withoutBlanks(std::string_view text) {
  return tidewell::trimmed(text, " \t\r\v\f");
}

char escapedCharacter(char letter) {
  switch (letter) {
    case 's':
      return ' ';
    case 'n':
      return '\n';
    case 't':
      return '\t';
    case 'r':
      return '\r';
    case '\\':
      return '\\';
    default:
      return '\0';
  }
}

/// A backslash that begins no escape of this format stays, because it may belong to a format within
/// the value.
std::string unescaped(std::string_view value) {
  std::string plain;
  for (std::size_t at = 0; at < value.size(); ++at) {
    const bool isEscape = value[at] == '\\' && at + 1 < value.size();
    const char escaped = isEscape ? escapedCharacter(value[at + 1]) : '\0';
    plain += escaped == '\0' ? value[at] : escaped;
    if (escaped != '\0') ++at;
  }
  return plain;
}

bool isTrue(std::string_view value) {
  return value == "true" || value == "1";  // "1" is older than the standard.
}

/// Reads the lines of the one group that the program uses.
class Reader {
 public:
  explicit Reader(const std::vector<std::string>& localeVariants)
      : localeVariants_(localeVariants), nameRank_(localeVariants.size() + 1) {}

  void readSetting(std::string_view key, std::string_view value) {
    if (key == "Type") entry_.type = unescaped(value);
    if (key == "Exec") entry_.exec = unescaped(value);
    if (key == "TryExec") entry_.tryExec = unescaped(value);
    if (key == "Terminal") entry_.terminal = isTrue(value);
    if (key == "NoDisplay") entry_.noDisplay = isTrue(value);
    if (key == "Hidden") entry_.hidden = isTrue(value);
    if (key.starts_with("Name")) readName(key.substr(4), value);
  }

  [[nodiscard]] const DesktopEntry& entry() const { return entry_; }

 private:
  /// `suffix` is empty, or a language in brackets.
  void readName(std::string_view suffix, std::string_view value) {
    std::size_t rank = localeVariants_.size();
    if (!suffix.empty()) {
      if (suffix.front() != '[' || suffix.back() != ']') return;
      const std::string_view language = suffix.substr(1, suffix.size() - 2);
      const auto found = std::ranges::find(localeVariants_, language);
      if (found == localeVariants_.end()) return;
      rank = static_cast<std::size_t>(found - localeVariants_.begin());
    }
    if (value.empty() || rank >= nameRank_) return;
    nameRank_ = rank;
    entry_.name = tidewell::cleaned(unescaped(value));
  }

  const std::vector<std::string>& localeVariants_;
  std::size_t nameRank_;
  DesktopEntry entry_;
};

}  // namespace

std::optional<DesktopEntry> DesktopEntry::parse(std::string_view text,
                                                const std::vector<std::string>& localeVariants) {
  Reader reader(localeVariants);
  bool isInGroup = false;
  bool wasInGroup = false;
  while (!text.empty()) {
    const std::string_view whole = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(whole.size() + 1, text.size()));
    const std::string_view line = withoutBlanks(whole);
    if (line.empty() || line.front() == '#') continue;
    if (line.front() == '[') {
      if (wasInGroup) break;
      isInGroup = line == "[Desktop Entry]";
      wasInGroup = isInGroup;
      continue;
    }
    const std::size_t equals = line.find('=');
    if (!isInGroup || equals == std::string_view::npos) continue;
    reader.readSetting(withoutBlanks(line.substr(0, equals)),
                       withoutBlanks(line.substr(equals + 1)));
  }
  return wasInGroup ? std::optional(reader.entry()) : std::nullopt;
}

std::vector<std::string> DesktopEntry::localeVariants(std::string_view locale) {
  const std::size_t at = std::min(locale.find('@'), locale.size());
  const std::string modifier(locale.substr(at));
  std::string_view place = locale.substr(0, at);
  place = place.substr(0, place.find('.'));
  const std::string language(place.substr(0, place.find('_')));
  if (language.empty() || language == "C" || language == "POSIX") return {};
  std::vector<std::string> variants;
  for (const std::string& base : {std::string(place), language}) {
    for (const std::string& variant : {base + modifier, base}) {
      if (std::ranges::find(variants, variant) == variants.end()) variants.push_back(variant);
    }
  }
  return variants;
}

}  // namespace platform
