#include "Platform/Linux/Settings/TomlDefaults.h"

#include <utility>

#include "Platform/Linux/System/XdgFolders.h"
#include "Tidewell/Log.h"
#include "Tidewell/PropertyConversion.h"

namespace platform {

using tidewell::PropertyDictionary;
using tidewell::PropertyValue;

std::filesystem::path TomlDefaults::defaultPath() {
  const std::filesystem::path folder = xdgConfigHome();
  return folder.empty() ? folder : folder / "staylit" / "settings.toml";
}

TomlDefaults::TomlDefaults(std::filesystem::path file) : file_(std::move(file)) {}

void TomlDefaults::registerDefaults(const PropertyDictionary& defaults) {
  for (const auto& [key, value] : defaults)
    registered_.insert_or_assign(key, value);
}

std::int64_t TomlDefaults::integer(std::string_view key) {
  return tidewell::integerValue(value(key));
}

double TomlDefaults::real(std::string_view key) {
  return tidewell::realValue(value(key));
}

bool TomlDefaults::boolean(std::string_view key) {
  return tidewell::booleanValue(value(key));
}

std::optional<std::vector<std::string>> TomlDefaults::stringList(std::string_view key) {
  return tidewell::stringListValue(value(key));
}

void TomlDefaults::setInteger(std::string_view key, std::int64_t value) {
  set(key, value);
}

void TomlDefaults::setReal(std::string_view key, double value) {
  set(key, value);
}

void TomlDefaults::setBoolean(std::string_view key, bool value) {
  set(key, value);
}

void TomlDefaults::setStringList(std::string_view key, const std::vector<std::string>& value) {
  set(key, value);
}

PropertyValue TomlDefaults::value(std::string_view key) {
  refresh();
  for (const PropertyDictionary* values : {&unsaved_, &saved_, &registered_}) {
    if (const auto found = values->find(key); found != values->end()) return found->second;
  }
  return {};
}

void TomlDefaults::set(std::string_view key, PropertyValue value) {
  unsaved_.insert_or_assign(std::string(key), std::move(value));
  const std::string error = save();
  if (!error.empty()) {
    complain(saveComplaint_, "settings cannot be saved to " + file_.path().string() + ": " + error +
                                 "; changes hold until the program ends");
    return;
  }
  for (auto& [name, saved] : unsaved_)
    saved_.insert_or_assign(name, std::move(saved));
  unsaved_.clear();
  saveComplaint_.clear();
  stamp_.reset();
}

void TomlDefaults::refresh() {
  if (stamp_ != file_.stamp()) reload();
}

void TomlDefaults::reload() {
  const RegularFile content = file_.read();
  if (!content.error.empty()) {
    stamp_.reset();
    complain(readComplaint_,
             "settings file " + file_.path().string() + " cannot be read: " + content.error);
    return;
  }
  SettingsValues settings = parseSettings(content.text);
  if (settings.error.empty()) {
    saved_ = std::move(settings.values);
    hasRead_ = true;
    readComplaint_.clear();
    remember(content.stamp);
    return;
  }
  // An editor that writes in place may be half-way, so a file that was sound gets a moment.
  if (!hasRead_ || content.stamp.isSettled()) setAsideDamaged();
}

void TomlDefaults::remember(const FileStamp& stamp) {
  stamp_ = stamp.isSettled() ? std::optional(stamp) : std::nullopt;
}

void TomlDefaults::setAsideDamaged() {
  const FolderLock lock = file_.lock();
  const RegularFile content = file_.read();
  const std::string damage = parseSettings(content.text).error;
  // Another process may have been here before the lock was ours; the next look shows.
  if (!content.error.empty() || damage.empty()) return;
  const std::string error = lock.error().empty() ? setAside(lock, damage) : lock.error();
  saved_.clear();
  hasRead_ = true;
  remember(file_.stamp());
  if (error.empty()) return;
  complain(readComplaint_, "settings file " + file_.path().string() + " is damaged (" + damage +
                               ") and cannot be set aside: " + error);
}

std::string TomlDefaults::setAside(const FolderLock& lock, const std::string& damage) {
  const SettingsFile::Change change = file_.setAside(lock);
  if (!change.error.empty()) return change.error;
  tidewell::Log::error("settings file " + file_.path().string() + " is damaged (" + damage +
                       "); set aside as " + change.path.string());
  return {};
}

std::string TomlDefaults::save() {
  const FolderLock lock = file_.lock();
  if (!lock.error().empty()) return lock.error();
  RegularFile content = file_.read();
  if (!content.error.empty()) return content.error;
  SettingsValues settings = parseSettings(content.text);
  if (!settings.error.empty()) {
    const std::string error = setAside(lock, settings.error);
    if (!error.empty()) return "it is damaged and cannot be set aside: " + error;
    content.text.clear();
  }
  const std::optional<std::string> text = withUnsaved(content, settings.values);
  if (!text) return "the change makes no valid file";
  return *text == content.text ? std::string() : file_.replace(*text, lock).error;
}

std::optional<std::string> TomlDefaults::withUnsaved(const RegularFile& content,
                                                     const PropertyDictionary& values) const {
  std::optional<std::string> text = content.text;
  for (const auto& [key, value] : unsaved_) {
    const auto present = values.find(key);
    if (present != values.end() && present->second == value) continue;
    text = withSetting(*text, key, value);
    if (!text) return std::nullopt;
  }
  return text;
}

void TomlDefaults::complain(std::string& former, const std::string& complaint) {
  if (former == complaint) return;
  former = complaint;
  tidewell::Log::error(complaint);
}

}  // namespace platform
