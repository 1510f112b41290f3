#include "Platform/Linux/Processes/ProgramPath.h"

#include "Platform/Linux/Processes/ShellWork.h"
#include "Tidewell/AppCatalog.h"
#include "Tidewell/ForeignText.h"

namespace platform {
namespace {

constexpr std::string_view kDeleted = " (deleted)";
constexpr std::string_view kDigits = "0123456789";

struct SplitPath {
  std::string_view folder;  ///< With its slash.
  std::string_view file;
};

SplitPath split(std::string_view exeLink) {
  if (exeLink.ends_with(kDeleted)) exeLink.remove_suffix(kDeleted.size());
  const std::size_t slash = exeLink.rfind('/');
  const std::size_t nameBegin = slash == std::string_view::npos ? 0 : slash + 1;
  return {exeLink.substr(0, nameBegin), exeLink.substr(nameBegin)};
}

bool isKnownExecutable(std::string_view name, tidewell::Text& text) {
  return !name.empty() && tidewell::AppCatalog::lookup(std::nullopt, name, text) != nullptr;
}

/// Cleans without shortening, because the end of a path matters, and the system limits its length.
std::string cleanPath(std::string_view folder, std::string_view name) {
  const std::string path = std::string(folder) + std::string(name);
  return tidewell::cleaned(path, path.size());
}

/// `name` without the digits at its end and the dot or dash before them. Empty when `name` does not
/// end with a digit, or consists of digits.
std::string_view withoutLastNumber(std::string_view name) {
  const std::size_t last = name.find_last_not_of(kDigits);
  if (last == std::string_view::npos || last + 1 == name.size()) return {};
  const bool separated = name[last] == '.' || name[last] == '-';
  return name.substr(0, separated ? last : last + 1);
}

/// Cuts version numbers off the end of `name` until the catalogue knows the rest. Empty when it
/// never does.
std::string_view knownWithoutVersion(std::string_view name, tidewell::Text& text) {
  for (name = withoutLastNumber(name); !name.empty(); name = withoutLastNumber(name)) {
    if (isKnownExecutable(name, text)) return name;
  }
  return {};
}

}  // namespace

std::string programPath(std::string_view exeLink, std::string_view comm, tidewell::Text& text) {
  const auto [folder, file] = split(exeLink);
  std::string_view name = file;
  const std::string_view firstWord = comm.substr(0, comm.find(' '));
  if (isKnownExecutable(comm, text)) {
    name = comm;
  } else if (isKnownExecutable(firstWord, text)) {
    name = firstWord;
  } else if (!isKnownExecutable(file, text)) {
    if (const auto known = knownWithoutVersion(file, text); !known.empty()) name = known;
  }
  return cleanPath(folder, name);
}

bool runsShell(std::string_view exeLink, std::string_view comm) {
  return isShell(split(exeLink).file, comm);
}

std::string scriptPath(std::string_view exeLink, std::string_view script) {
  return cleanPath(split(exeLink).folder, script);
}

}  // namespace platform
