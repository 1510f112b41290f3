#include "Platform/Linux/Applications/UnitName.h"

#include <algorithm>
#include <optional>

#include "Tidewell/ForeignText.h"

namespace platform {
namespace {

using Ids = std::vector<std::string>;

constexpr std::string_view kScope = ".scope";
constexpr std::string_view kService = ".service";
constexpr std::size_t kLongestName = 255;

/// `text` without `prefix`. Absent when `text` does not begin with it.
std::optional<std::string_view> after(std::string_view text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return std::nullopt;
  return text.substr(prefix.size());
}

std::string_view beforeLast(std::string_view text, char separator) {
  const std::size_t last = text.rfind(separator);
  return last == std::string_view::npos ? std::string_view() : text.substr(0, last);
}

/// The path in the line "0::<path>". The kernel adds a mark to the path when the group of a living
/// process was removed; the result does not have the mark.
std::string_view unifiedPath(std::string_view file) {
  while (!file.empty()) {
    std::string_view line = file.substr(0, file.find('\n'));
    file.remove_prefix(std::min(line.size() + 1, file.size()));
    if (!line.starts_with("0::")) continue;
    line.remove_prefix(3);
    constexpr std::string_view deleted = " (deleted)";
    if (line.ends_with(deleted)) line.remove_suffix(deleted.size());
    return line;
  }
  return {};
}

int hexDigit(char character) {
  if (character >= '0' && character <= '9') return character - '0';
  if (character >= 'a' && character <= 'f') return character - 'a' + 10;
  return -1;
}

/// Replaces the service manager's escapes, such as "\x2d".
std::string withoutHexEscapes(std::string_view text) {
  std::string plain;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const std::string_view rest = text.substr(at);
    const bool isEscape = rest.size() >= 4 && rest.starts_with("\\x") && hexDigit(rest[2]) >= 0 &&
                          hexDigit(rest[3]) >= 0;
    plain += isEscape ? static_cast<char>(hexDigit(rest[2]) * 16 + hexDigit(rest[3])) : rest[0];
    if (isEscape) at += 3;
  }
  return plain;
}

void add(Ids& ids, std::string_view escaped) {
  const std::string id = withoutHexEscapes(escaped);
  const bool isFileName = !id.empty() && id[0] != '.' && id.find('/') == std::string::npos;
  if (!isFileName || id != tidewell::cleaned(id) || std::ranges::find(ids, id) != ids.end()) return;
  ids.push_back(id);
}

/// Adds `body`, and then the part of `body` after each dash, because what stands before may be the
/// launcher.
void addReadings(Ids& ids, std::string_view body) {
  if (const auto flatpak = after(body, "flatpak-")) body = *flatpak;
  add(ids, body);
  for (std::size_t dash = body.find('-'); dash != std::string_view::npos;
       dash = body.find('-', dash + 1)) {
    add(ids, body.substr(dash + 1));
  }
}

/// Adds the id for `<snap>.<app>`, whose desktop file is called `<snap>_<app>`.
void addSnap(Ids& ids, std::string_view name) {
  constexpr std::size_t uuidLength = 36;
  if (name.size() <= uuidLength + 1) return;
  name.remove_suffix(uuidLength);
  if (name.back() != '.' && name.back() != '-') return;
  name.remove_suffix(1);
  const std::size_t dot = name.find('.');
  constexpr auto kNone = std::string_view::npos;
  if (dot == kNone || name.find('.', dot + 1) != kNone) return;
  const std::string_view snap = name.substr(0, dot);
  const std::string_view app = name.substr(dot + 1);
  if (snap.empty() || app.empty()) return;
  add(ids, std::string(snap) + "_" + std::string(app));
}

void addScope(Ids& ids, std::string_view body) {
  if (const auto snap = after(body, "snap.")) addSnap(ids, *snap);
  const auto application = after(body, "app-");
  if (!application) return;
  addReadings(ids, beforeLast(*application, '-'));
  add(ids, *application);
}

void addService(Ids& ids, std::string_view body) {
  body = body.substr(0, body.find('@'));
  if (const auto bus = after(body, "dbus-:")) {
    const std::size_t dash = bus->find('-');
    if (dash != bus->npos) add(ids, bus->substr(dash + 1));
  }
  const auto application = after(body, "app-");
  if (!application) return;
  addReadings(ids, *application);
  addReadings(ids, beforeLast(*application, '-'));
}

}  // namespace

UnitName UnitName::fromControlGroup(std::string_view file) {
  for (std::string_view path = unifiedPath(file); !path.empty(); path = beforeLast(path, '/')) {
    const std::string_view group = path.substr(path.rfind('/') + 1);
    if (group.ends_with(kScope) || group.ends_with(kService)) return UnitName(path);
    if (group.ends_with(".slice")) break;
  }
  return {};
}

std::string_view UnitName::name() const {
  return std::string_view(path_).substr(path_.rfind('/') + 1);
}

std::vector<std::string> UnitName::applicationIds() const {
  Ids ids;
  std::string_view unit = name();
  if (unit.size() > kLongestName) return ids;
  if (unit.ends_with(kScope)) addScope(ids, unit.substr(0, unit.size() - kScope.size()));
  if (unit.ends_with(kService)) addService(ids, unit.substr(0, unit.size() - kService.size()));
  return ids;
}

}  // namespace platform
