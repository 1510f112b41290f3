#include "Platform/Linux/Text/IcuText.h"

#include <unicode/ubrk.h>
#include <unicode/ucasemap.h>
#include <unicode/ucol.h>
#include <unicode/uloc.h>
#include <unicode/utext.h>

#include <algorithm>
#include <cstdint>
#include <utility>

#include "Tidewell/ForeignText.h"

namespace platform {
namespace {

struct CaseMapCloser {
  void operator()(UCaseMap* map) const { ucasemap_close(map); }
};
struct TextCloser {
  void operator()(UText* text) const { utext_close(text); }
};

bool isAscii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// False for a carriage return as well, because a line feed after it belongs to the same character.
bool hasOneCharacterAByte(std::string_view text) {
  return isAscii(text) && text.find('\r') == std::string_view::npos;
}

void lowerAscii(std::string& text) {
  for (char& character : text) {
    if (character >= 'A' && character <= 'Z') character = static_cast<char>(character - 'A' + 'a');
  }
}

/// ICU counts in 32 bits.
std::int32_t length32(std::string_view text) {
  return static_cast<std::int32_t>(std::min<std::size_t>(text.size(), INT32_MAX));
}

/// Uses the root locale, so that the result does not depend on the user's language.
const UCaseMap* caseMap() {
  static const std::unique_ptr<UCaseMap, CaseMapCloser> map = [] {
    UErrorCode error = U_ZERO_ERROR;
    return std::unique_ptr<UCaseMap, CaseMapCloser>(ucasemap_open("", 0, &error));
  }();
  return map.get();
}

std::string filledUp(std::string_view text, std::size_t blanks) {
  std::string filled;
  filled.reserve(text.size() + blanks);
  filled.append(text).append(blanks, ' ');
  return filled;
}

}  // namespace

void IcuText::Closer::operator()(UCollator* collator) const {
  ucol_close(collator);
}

void IcuText::Closer::operator()(UBreakIterator* iterator) const {
  ubrk_close(iterator);
}

IcuText::IcuText(std::string locale) : locale_(std::move(locale)) {
  // ICU takes these names for a language in which all upper case comes before all lower case.
  if (locale_ == "C" || locale_ == "POSIX" || locale_.starts_with("C.")) locale_.clear();
}

IcuText::~IcuText() = default;

std::string IcuText::lowercased(std::string_view text) {
  if (isAscii(text)) {
    std::string lower(text);
    lowerAscii(lower);
    return lower;
  }
  const std::string clean = tidewell::wellFormed(text);
  std::string lower(clean.size() + clean.size() / 2 + 8, '\0');
  for (int attempt = 0; attempt < 2 && caseMap() != nullptr; ++attempt) {
    UErrorCode error = U_ZERO_ERROR;
    const std::int32_t size = ucasemap_utf8ToLower(caseMap(), lower.data(), length32(lower),
                                                   clean.data(), length32(clean), &error);
    if (error != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(error)) break;
    lower.resize(static_cast<std::size_t>(size));
    if (U_SUCCESS(error)) return lower;
  }
  lower = clean;
  lowerAscii(lower);
  return lower;
}

const UCollator* IcuText::collator() {
  std::call_once(collatorOnce_, [this] {
    char name[ULOC_FULLNAME_CAPACITY] = "";
    UErrorCode error = U_ZERO_ERROR;
    uloc_canonicalize(locale_.c_str(), name, sizeof name, &error);
    if (U_FAILURE(error) || error == U_STRING_NOT_TERMINATED_WARNING) name[0] = '\0';
    error = U_ZERO_ERROR;
    collator_.reset(ucol_open(name, &error));
    // The second level distinguishes accents, but not upper case from lower.
    if (collator_) ucol_setStrength(collator_.get(), UCOL_SECONDARY);
  });
  return collator_.get();
}

std::weak_ordering IcuText::localizedCaseInsensitiveCompare(std::string_view left,
                                                            std::string_view right) {
  if (const UCollator* rules = collator()) {
    UErrorCode error = U_ZERO_ERROR;
    const UCollationResult order =
        ucol_strcollUTF8(rules, left.data(), length32(left), right.data(), length32(right), &error);
    if (U_SUCCESS(error)) return std::weak_order(static_cast<int>(order), 0);
  }
  return lowercased(left) <=> lowercased(right);
}

std::string IcuText::padded(std::string_view text, std::size_t length) {
  if (hasOneCharacterAByte(text)) {
    const std::string_view kept = text.substr(0, length);
    return filledUp(kept, length - kept.size());
  }
  const std::lock_guard lock(charactersMutex_);
  return paddedClusters(tidewell::wellFormed(text), length);
}

std::string IcuText::paddedClusters(const std::string& text, std::size_t length) {
  UErrorCode error = U_ZERO_ERROR;
  if (!characters_) characters_.reset(ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &error));
  const std::unique_ptr<UText, TextCloser> source(
      utext_openUTF8(nullptr, text.data(), length32(text), &error));
  ubrk_setUText(characters_.get(), source.get(), &error);
  if (U_FAILURE(error)) return text;
  std::int32_t end = 0;
  std::size_t count = 0;
  while (count < length) {
    const std::int32_t next = ubrk_next(characters_.get());
    if (next == UBRK_DONE) break;
    end = next;
    ++count;
  }
  return filledUp(std::string_view(text).substr(0, static_cast<std::size_t>(end)), length - count);
}

}  // namespace platform
