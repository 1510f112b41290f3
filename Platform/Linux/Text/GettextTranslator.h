#pragma once

#include <locale.h>

#include <filesystem>
#include <memory>

#include "Tidewell/Words.h"

namespace platform {

/// The program's texts from the catalogues of gettext, in the language of the environment.
///
/// The locale of the process stays as it is, because the messages of the C library, which go to the
/// log, follow it. The texts are UTF-8 in every locale. Any thread.
class GettextTranslator : public tidewell::Translator {
 public:
  /// With the catalogues that belong to this program. Null where the environment wants the source:
  /// in the locales C and POSIX, and in one that the system lacks.
  ///
  /// A language without a catalogue is followed by English, whose catalogue speaks of computers and
  /// panels; the source speaks as a Mac does. For this the list of languages in the environment
  /// gets longer, so call it before there are other threads.
  static std::shared_ptr<const tidewell::Translator> ofThisProgram();

  /// With the catalogues below `folder`, such as "/usr/share/locale"; as above.
  static std::shared_ptr<const tidewell::Translator> from(const std::filesystem::path& folder);

  ~GettextTranslator() override;

  const char* find(const char* text) const override;
  const char* find(const char* one, const char* many, std::uint64_t count) const override;

 private:
  explicit GettextTranslator(locale_t locale) : locale_(locale) {}

  locale_t locale_;
};

}  // namespace platform
