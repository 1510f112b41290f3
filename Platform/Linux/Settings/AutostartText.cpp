#include "Platform/Linux/Settings/AutostartText.h"

#include <unistd.h>

#include <cstdlib>
#include <system_error>

#include "Platform/Linux/Files/XdgFolders.h"
#include "Platform/Posix/Files/HomeFolder.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kName = "staylit";

/// The first program with the program's name in the folders of `PATH`; empty when there is none.
fs::path foundByName() {
  const char* folders = std::getenv("PATH");
  for (const fs::path& folder : absolutePaths(folders == nullptr ? "" : folders)) {
    fs::path candidate = folder / kName;
    if (::access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  return {};
}

bool liesBelow(const fs::path& folder, const fs::path& path) {
  const std::string prefix = folder.native() + "/";
  return !folder.empty() && path.native().starts_with(prefix);
}

/// Inserts a backslash before each of `characters`.
std::string escaped(std::string_view text, std::string_view characters) {
  std::string result;
  for (const char character : text) {
    if (characters.find(character) != std::string_view::npos) result += '\\';
    result += character;
  }
  return result;
}

std::string withCodesDoubled(std::string_view text) {
  std::string result;
  for (const char character : text) {
    if (character == '%') result += '%';
    result += character;
  }
  return result;
}

/// The text as the value of any key: a character that would end the line becomes an escape.
std::string asValue(std::string_view text) {
  std::string result;
  for (const char character : text) {
    switch (character) {
      case '\\':
        result += "\\\\";
        break;
      case '\n':
        result += "\\n";
        break;
      case '\r':
        result += "\\r";
        break;
      case '\t':
        result += "\\t";
        break;
      default:
        result += character;
    }
  }
  return result;
}

bool isFoundByName(const fs::path& program) {
  const fs::path found = foundByName();
  std::error_code error;
  const bool isFound = !found.empty() && fs::canonical(found, error) == program;
  // A shell finds programs in the user's own folders, but the session may not.
  return isFound && !liesBelow(homeFolder(), found);
}

}  // namespace

std::string autostartText(const fs::path& program) {
  const std::string tried = isFoundByName(program) ? std::string(kName) : asValue(program.native());
  return "[Desktop Entry]\n"
         "Type=Application\n"
         "Name=Staylit\n"
         "Comment=Keeps the computer awake while it works\n"
         "Exec=" +
         startingWord(program) +
         " --background\n"
         "TryExec=" +
         tried +
         "\n"
         "Icon=com.staylit.app\n"
         "Terminal=false\n"
         "StartupNotify=false\n";
}

std::string quotedWord(std::string_view word) {
  return asValue('"' + escaped(withCodesDoubled(word), "\"`$\\") + '"');
}

std::string startingWord(const fs::path& program) {
  return isFoundByName(program) ? std::string(kName) : quotedWord(program.native());
}

}  // namespace platform
