#include "Platform/Linux/Processes/ProgramPath.h"

#include "Platform/Linux/System/Utf8.h"
#include "Tidewell/AppCatalog.h"

namespace platform {
namespace {

constexpr std::string_view kDeleted = " (deleted)";
constexpr std::string_view kDigits = "0123456789";

bool isKnownExecutable(std::string_view name, tidewell::Text& text) {
  return !name.empty() && tidewell::AppCatalog::lookup(std::nullopt, name, text) != nullptr;
}

/// `name` less its last group of digits and the dot or dash before it; empty when nothing is left
/// to cut.
std::string_view withoutLastNumber(std::string_view name) {
  const std::size_t last = name.find_last_not_of(kDigits);
  if (last == std::string_view::npos || last + 1 == name.size()) return {};
  const bool separated = name[last] == '.' || name[last] == '-';
  return name.substr(0, separated ? last : last + 1);
}

/// The longest beginning of `name`, cut at its version numbers, that the catalogue knows.
std::string_view knownWithoutVersion(std::string_view name, tidewell::Text& text) {
  for (name = withoutLastNumber(name); !name.empty(); name = withoutLastNumber(name)) {
    if (isKnownExecutable(name, text)) return name;
  }
  return {};
}

}  // namespace

std::string programPath(std::string_view exeLink, std::string_view comm, tidewell::Text& text) {
  if (exeLink.ends_with(kDeleted)) exeLink.remove_suffix(kDeleted.size());
  const std::size_t slash = exeLink.rfind('/');
  const std::size_t nameBegin = slash == std::string_view::npos ? 0 : slash + 1;
  const std::string_view file = exeLink.substr(nameBegin);

  std::string_view name = file;
  if (isKnownExecutable(comm, text)) {
    name = comm;
  } else if (!isKnownExecutable(file, text)) {
    if (const auto known = knownWithoutVersion(file, text); !known.empty()) name = known;
  }
  return cleaned(std::string(exeLink.substr(0, nameBegin)) + std::string(name));
}

}  // namespace platform
