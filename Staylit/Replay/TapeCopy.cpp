#include "Staylit/Replay/TapeCopy.h"

#include <algorithm>
#include <utility>
#include <variant>

#include "Staylit/Prefs.h"
#include "Tidewell/AppCatalog.h"

namespace staylit {

TapeCopy::TapeCopy(TapeOutput& output, tidewell::Text& text, MadeUpNames* names)
    : writer_(output), text_(text), names_(names) {}

void TapeCopy::copy(std::string_view file) {
  TapeReader reader(file);
  version_ = 0;
  while (const auto event = reader.next()) {
    if (writer_.isStopped()) return;
    write(reader, *event);
  }
}

void TapeCopy::write(TapeReader& reader, const TapeEvent& event) {
  if (const auto* began = std::get_if<TapeBegan>(&event)) {
    began_ = *began;
    began_.isMadeUp = began_.isMadeUp || names_ != nullptr;
    writer_.begin(began_);
    // What the run is told next no longer follows its beginning.
    began_.isFirst = false;
    return;
  }
  if (const auto* tick = std::get_if<TapedTick>(&event)) return writeTick(reader, *tick);
  if (const auto* mark = std::get_if<TapeMark>(&event)) return writer_.add(*mark);
  const auto& clockSet = std::get<TapeClockSet>(event);
  began_.wallTime = clockSet.wallTime;
  began_.at = clockSet.at;
  writer_.add(clockSet);
}

void TapeCopy::writeTick(TapeReader& reader, const TapedTick& tick) {
  if (writer_.needsBeginning()) {
    began_.wallTime += tick.at - began_.at;
    began_.at = tick.at;
    writer_.begin(began_);
  }
  ++ticks_;
  if (!names_) return writer_.add(tick, reader.inputs());
  takeNames(reader);
  TapedTick copied = tick;
  copied.outcome = replacedIn(tick.outcome, reader.inputs().asserting);
  writer_.add(copied, inputs_);
}

void TapeCopy::takeNames(const TapeReader& reader) {
  const TapedInputs& read = reader.inputs();
  const bool isNew = std::exchange(version_, reader.version()) != reader.version();
  if (isNew) {
    inputs_.applications = read.applications;
    for (TapedApplication& application : inputs_.applications) {
      const tidewell::CatalogEntry* entry =
          tidewell::AppCatalog::lookup(application.bundleID, application.executable, text_);
      const std::string shown = entry ? entry->display : application.display;
      names_->replaceIn(application);
      shownNames_.insert_or_assign(shown, application.display);
    }
  }
  for (std::size_t place = 0; place < read.applications.size(); ++place) {
    inputs_.applications[place].usage = read.applications[place].usage;
    inputs_.applications[place].isPresent = read.applications[place].isPresent;
  }
  inputs_.asserting = replaced(read.asserting);
  inputs_.power = read.power;
  inputs_.settings = read.settings;
  const auto ignored = inputs_.settings.find(keys::ignoredApps);
  if (ignored == inputs_.settings.end()) return;
  if (auto* names = std::get_if<std::vector<std::string>>(&ignored->second)) {
    *names = replaced(*names);
  }
}

std::vector<std::string> TapeCopy::replaced(const std::vector<std::string>& names) {
  std::vector<std::string> result;
  result.reserve(names.size());
  for (const std::string& name : names)
    result.push_back(names_->of(name));
  // Who asks is always told in the order of the names.
  std::ranges::sort(result);
  return result;
}

EngineStatus TapeCopy::replacedIn(const EngineStatus& outcome,
                                  const std::vector<std::string>& asserting) {
  const auto* holding = std::get_if<EngineStatus::Holding>(&outcome.value);
  if (!holding) return outcome;
  // Those who ask stand behind those who work.
  const auto& all = holding->names;
  auto firstAsking = all.end();
  while (firstAsking != all.begin() &&
         std::ranges::find(asserting, *(firstAsking - 1)) != asserting.end()) {
    --firstAsking;
  }
  std::vector<std::string> names;
  for (auto name = all.begin(); name != firstAsking; ++name) {
    const auto shown = shownNames_.find(*name);
    names.push_back(shown == shownNames_.end() ? names_->of(*name) : shown->second);
  }
  const auto asking = replaced({firstAsking, all.end()});
  names.insert(names.end(), asking.begin(), asking.end());
  return EngineStatus::holding(std::move(names));
}

}  // namespace staylit
