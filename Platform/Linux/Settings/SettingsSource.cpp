#include "Platform/Linux/Settings/SettingsSource.h"

#include <utility>

namespace platform {
namespace {

using State = SettingsSource::Saving::State;
using Outcome = FileReplacement::Outcome;

constexpr int kAttempts = 8;
constexpr const char* kBeingWritten = "another program is writing it";

bool isBlank(const std::string& text) {
  return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

struct Edited {
  std::string text;
  bool isComplete;  ///< Whether it contains every edit.
};

/// Writes all edits that can be written, even when one cannot.
Edited withAsManyAsPossible(const std::string& text, const tidewell::PropertyDictionary& edits) {
  if (std::optional<std::string> all = withSettings(text, edits)) return {*std::move(all), true};
  Edited edited{text, false};
  for (const auto& [key, value] : edits) {
    std::optional<std::string> next = withSettings(edited.text, {{key, value}});
    if (next) edited.text = *std::move(next);
  }
  return edited;
}

bool isWhole(const std::string& text, const SettingsValues& settings) {
  return settings.damage.empty() && !isBlank(text);
}

}  // namespace

SettingsSource::SettingsSource(std::filesystem::path file, std::chrono::milliseconds settling)
    : file_(std::move(file)), settling_(settling) {}

void SettingsSource::look() {
  if (stamp_ && stamp_ == file_.stamp()) return;
  RegularFile content;
  if (!readAfresh(content)) return;
  stamp_ = content.stamp.isSettled() ? std::optional(content.stamp) : std::nullopt;
}

/// Reads the file into `content`. True when `values_` come from this content.
bool SettingsSource::readAfresh(RegularFile& content) {
  stamp_.reset();
  content = file_.read();
  if (!content.error.empty()) {
    complain(readComplaint_,
             "settings file " + path().string() + " cannot be read: " + content.error);
    return false;
  }
  readComplaint_.clear();
  if (content.text == accepted_) {
    doubtful_.reset();
    return true;
  }
  SettingsValues settings = parseSettings(content.text);
  if (!isBelieved(content, settings)) return false;
  accept(content.text, std::move(settings));
  return true;
}

bool SettingsSource::isBelieved(const RegularFile& content, const SettingsValues& settings) {
  if (isWhole(content.text, settings) || !accepted_) return true;
  const auto now = std::chrono::steady_clock::now();
  if (doubtful_ != content.text) {
    doubtful_ = content.text;
    doubtfulSince_ = now;
  }
  return now - doubtfulSince_ >= settling_;
}

void SettingsSource::keep(std::string text, SettingsValues settings) {
  absence_ =
      isWhole(text, settings) ? PendingEdits::Absence::counts : PendingEdits::Absence::meansNothing;
  accepted_ = std::move(text);
  values_ = std::move(settings.values);
}

void SettingsSource::accept(std::string text, SettingsValues settings) {
  const std::string damage = settings.damage;
  foreign_ = text;
  keep(std::move(text), std::move(settings));
  doubtful_.reset();
  if (damage.empty()) {
    damageComplaint_.clear();
    return;
  }
  complain(damageComplaint_, "settings file " + path().string() + " is damaged (" + damage +
                                 "); what cannot be read of it has its default");
}

SettingsSource::Saving SettingsSource::save(PendingEdits edits) {
  const FolderLock lock = file_.lock();
  if (lock.isHeldByAnother()) return {State::later, lock.error()};
  if (!lock.error().empty()) return {State::failed, lock.error()};
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (auto saving = tryToSave(edits, lock)) return *std::move(saving);
  }
  return {State::later, kBeingWritten};
}

/// Absent when others changed the file meanwhile.
std::optional<SettingsSource::Saving> SettingsSource::tryToSave(PendingEdits& edits,
                                                                const FolderLock& lock) {
  RegularFile content;
  if (!readAfresh(content)) {
    return content.error.empty() ? Saving{State::later, kBeingWritten}
                                 : Saving{State::failed, content.error};
  }
  edits.follow(values_, absence_);
  Edited edited = withAsManyAsPossible(content.text, edits.values());
  if (edited.text != content.text) {
    const SettingsFile::Change change = file_.replace(edited.text, content, lock);
    if (change.outcome == Outcome::failed) return Saving{State::failed, change.error};
    if (change.outcome == Outcome::busy) return Saving{State::later, kBeingWritten};
    if (change.outcome == Outcome::changed) return std::nullopt;
    SettingsValues settings = parseSettings(edited.text);
    keep(std::move(edited.text), std::move(settings));
  }
  if (!edited.isComplete) return Saving{State::failed, "the change makes no valid file"};
  saveComplaint_.clear();
  savingProblem_.clear();
  return Saving{State::done, {}};
}

void SettingsSource::complainOfSaving(const std::string& why) {
  savingProblem_ = why;
  complain(saveComplaint_, "settings cannot be saved to " + path().string() + ": " + why +
                               "; changes hold until the program ends");
}

std::vector<std::string> SettingsSource::takeComplaints() {
  return std::exchange(complaints_, {});
}

void SettingsSource::complain(std::string& former, const std::string& complaint) {
  if (former == complaint) return;
  former = complaint;
  complaints_.push_back(complaint);
}

}  // namespace platform
