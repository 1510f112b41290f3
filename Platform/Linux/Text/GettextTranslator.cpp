#include "Platform/Linux/Text/GettextTranslator.h"

#include <libintl.h>

#include <cstdlib>
#include <string>
#include <string_view>
#include <system_error>

#include "Platform/Linux/Text/EnvironmentLocale.h"

namespace platform {
namespace {

constexpr const char* kDomain = "staylit";

/// Where the languages of messages are listed, the wanted ones first.
constexpr const char* kLanguages = "LANGUAGE";

/// Makes a locale that of the calling thread, for its scope.
class ThreadLocale {
 public:
  explicit ThreadLocale(locale_t locale) : former_(uselocale(locale)) {}
  ~ThreadLocale() { uselocale(former_); }
  ThreadLocale(const ThreadLocale&) = delete;
  ThreadLocale& operator=(const ThreadLocale&) = delete;

 private:
  locale_t former_;
};

/// "C.UTF-8" is the source as well; what gettext makes of it differs from version to version.
bool isSource(std::string_view locale) {
  return locale.empty() || locale == "POSIX" || locale == "C" || locale.starts_with("C.");
}

void addEnglish(const std::string& locale) {
  const char* wanted = std::getenv(kLanguages);
  const std::string languages = wanted && *wanted != '\0' ? wanted : locale;
  setenv(kLanguages, (languages + ":en").c_str(), 1);
}

}  // namespace

std::shared_ptr<const tidewell::Translator> GettextTranslator::ofThisProgram() {
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
  // In a build folder, the catalogues lie beside the program.
  const auto beside = program / "share/locale";
  return from(std::filesystem::exists(beside, error) ? beside
                                                     : program.parent_path() / "share/locale");
}

std::shared_ptr<const tidewell::Translator> GettextTranslator::from(
    const std::filesystem::path& folder) {
  const std::string name = environmentLocale("LC_MESSAGES");
  if (isSource(name)) return nullptr;
  const locale_t locale = newlocale(LC_MESSAGES_MASK, name.c_str(), nullptr);
  if (!locale) return nullptr;
  addEnglish(name);
  bindtextdomain(kDomain, folder.c_str());
  bind_textdomain_codeset(kDomain, "UTF-8");
  return std::shared_ptr<const tidewell::Translator>(new GettextTranslator(locale));
}

GettextTranslator::~GettextTranslator() {
  freelocale(locale_);
}

const char* GettextTranslator::find(const char* text) const {
  const ThreadLocale thread(locale_);
  return dgettext(kDomain, text);
}

const char* GettextTranslator::find(const char* one, const char* many, std::uint64_t count) const {
  const ThreadLocale thread(locale_);
  return dngettext(kDomain, one, many, count);
}

}  // namespace platform
