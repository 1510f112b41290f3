#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

namespace tidewell {

/// Knows the texts of the program in the language of the user. Safe from any thread.
class Translator {
 public:
  Translator() = default;
  virtual ~Translator() = default;
  Translator(const Translator&) = delete;
  Translator& operator=(const Translator&) = delete;

  /// `text` in the user's language, or `text` itself where it has no translation. A translation
  /// lives as long as the process.
  virtual const char* find(const char* text) const = 0;

  /// The form that the language uses for `count` things. Without a translation: `one` for 1, else
  /// `many`.
  virtual const char* find(const char* one, const char* many, std::uint64_t count) const = 0;
};

/// Words the texts of the program, in one of two languages.
///
/// `source` is the English that stands in the code. Everything that is not for the eyes of the user
/// alone stays in it: logs, reports, terminals, the reasons of holds, all that other programs read.
/// `shown` is the language of the user, for the menu, the windows and notifications.
///
/// A text is a whole sentence, so that each language can put it into its own order. What changes
/// within it stands as a name in braces: `phrase("Awake for {app}", {{"app", name}})`. A
/// translation whose braces do not fit is not used. `scripts/extract-words` finds the texts by the
/// names of the functions here, so each of them must be written out where the function is called.
///
/// Safe from any thread, once the translator is set.
class Words {
 public:
  /// What stands in the place of a name in braces.
  struct Value {
    std::string_view name;
    std::string text;
  };
  using Values = std::initializer_list<Value>;

  [[nodiscard]] static const Words& source();
  /// The same as `source` until there is a translator.
  [[nodiscard]] static const Words& shown();
  /// Sets the language of `shown`; null for the source. Call it before the first text is shown.
  static void setTranslator(std::shared_ptr<const Translator> translator);
  /// What was set, for the parts of the program that are loaded and have a `shown` of their own.
  [[nodiscard]] static std::shared_ptr<const Translator> translator();

  /// The result lives as long as the process.
  [[nodiscard]] const char* phrase(const char* text) const;
  [[nodiscard]] std::string phrase(const char* text, Values values) const;

  /// The form for `count` things, with the number in the place of "{count}". Both forms may be the
  /// same where English has only one; other languages may have more.
  [[nodiscard]] std::string phraseFor(std::int64_t count, const char* one, const char* many,
                                      Values values = {}) const;

  /// A text that was marked with `toBePhrased` where it arose. Any other text stays as it is.
  [[nodiscard]] std::string knownPhrase(const std::string& text) const;

 private:
  std::shared_ptr<const Translator> translator_;
};

/// Marks a text for translators that is worded in another place than where it stands.
[[nodiscard]] constexpr const char* toBePhrased(const char* text) {
  return text;
}

}  // namespace tidewell
