#include "Staylit/Replay/ReplayReport.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "Staylit/History/HistoryJson.h"
#include "Staylit/JsonText.h"
#include "Staylit/TimeTexts.h"

namespace staylit {
namespace {

using Texts = std::vector<std::string>;

/// What the time is put down to in which no work came before a hold.
constexpr const char* kBeginning = "(waiting for the first work)";

constexpr std::size_t kReplayNameWidth = 30;
constexpr std::size_t kTimeWidth = 14;
constexpr std::size_t kMostNamesInSentence = 4;

std::string joinedTexts(const Texts& texts, const char* separator) {
  std::string result;
  for (const std::string& text : texts)
    result += (result.empty() ? "" : separator) + text;
  return result;
}

/// As many as a sentence bears, and how many more there are.
std::string firstTexts(const Texts& texts) {
  const std::size_t count = std::min(texts.size(), kMostNamesInSentence);
  const Texts first(texts.begin(), texts.begin() + static_cast<std::ptrdiff_t>(count));
  const std::size_t others = texts.size() - count;
  return joinedTexts(first, ", ") + (others > 0 ? " and " + std::to_string(others) + " more" : "");
}

std::string ticksText(std::uint64_t count) {
  return std::to_string(count) + (count == 1 ? " tick" : " ticks");
}

std::string signedLength(std::chrono::nanoseconds length) {
  if (length < std::chrono::seconds(1) && length > -std::chrono::seconds(1)) return "0 s";
  const bool isLess = length.count() < 0;
  return (isLess ? "\u2212" : "+") + lengthOfTime(isLess ? -length : length);
}

std::int64_t flooredSeconds(std::chrono::nanoseconds length) {
  return std::chrono::floor<std::chrono::seconds>(length).count();
}

Texts namesOf(const ReplayStretch::Side& side) {
  if (!side.isHeld) return {};
  return side.names.empty() ? Texts{kBeginning} : side.names;
}

std::string jsonOfSum(const ReplayReport::Sum& sum, const std::string* name) {
  JsonObject object;
  if (name) object.addText("name", *name);
  object.addNumber("wasSeconds", flooredSeconds(sum.was));
  object.addNumber("wouldBeSeconds", flooredSeconds(sum.would));
  return object.text();
}

}  // namespace

ReplayReport::ReplayReport(ReplayResult plain, std::optional<ReplayResult> changed, Texts settings)
    : plain_(std::move(plain)), changed_(std::move(changed)), settings_(std::move(settings)) {
  for (const ReplayStretch& stretch : result().stretches)
    add(stretch);
  std::ranges::stable_sort(names_, std::ranges::greater(), [](const NamedSum& named) {
    return std::max(named.sum.was, named.sum.would);
  });
}

void ReplayReport::add(const ReplayStretch& stretch) {
  length_ += stretch.length;
  if (stretch.was.isHeld) total_.was += stretch.length;
  if (stretch.would.isHeld) total_.would += stretch.length;
  for (const std::string& name : namesOf(stretch.was))
    sumOf(name).was += stretch.length;
  for (const std::string& name : namesOf(stretch.would))
    sumOf(name).would += stretch.length;
  if (stretch.was.isHeld && !stretch.would.isHeld) lost_.push_back(namesOf(stretch.was));
  if (!stretch.was.isHeld && stretch.would.isHeld) gained_.push_back(namesOf(stretch.would));
}

ReplayReport::Sum& ReplayReport::sumOf(const std::string& name) {
  const auto found = std::ranges::find(names_, name, &NamedSum::name);
  if (found != names_.end()) return found->sum;
  return names_.emplace_back(NamedSum{name, {}}).sum;
}

HistoryTimeline ReplayReport::timeline() const {
  return timelineOf(result().history, result().from, result().to);
}

Texts ReplayReport::lines(tidewell::Text& text, HistoryTexts::Style style) const {
  Texts all{aboutRecording()};
  if (isEmpty()) return all;
  const auto add = [&all](Texts more) { std::ranges::move(more, std::back_inserter(all)); };
  add(aboutFaithfulness());
  all.emplace_back();
  add(history(style));
  add(comparison(text));
  return all;
}

Texts ReplayReport::history(HistoryTexts::Style style) const {
  Texts all;
  if (changed_) {
    all.push_back("With " + joinedTexts(settings_, " and ") + ":");
  } else if (!isFaithful()) {
    all.emplace_back("Replayed by this version:");
  }
  const ReplayResult& shown = result();
  for (std::string& line : HistoryTexts::lines(shown.history, shown.from, shown.to, style))
    all.push_back(std::move(line));
  return all;
}

Texts ReplayReport::comparison(tidewell::Text& text) const {
  const bool hasNothingToCompare = !changed_ && isFaithful();
  if (hasNothingToCompare) return {};
  Texts all{"", aboutWhatWas(), aboutDifference()};
  std::ranges::move(table(text), std::back_inserter(all));
  return all;
}

std::string ReplayReport::aboutRecording() const {
  if (isEmpty() && plain_.hasUnreadableRest) {
    return "Nothing of the recording can be read: it was cut off or damaged at its beginning.";
  }
  if (isEmpty()) return "The recording has nothing that can be judged.";
  std::string sentence = "The recording has " + ticksText(plain_.ticks) + " in " +
                         lengthOfTime(length_) + " by " + plain_.program + ", from " +
                         inUniversalTime(plain_.from);
  if (plain_.runs > 1) sentence += ", in " + std::to_string(plain_.runs) + " runs";
  if (plain_.warmUp.count() > 0) {
    sentence += ", and " + lengthOfTime(plain_.warmUp) + " before them that only warm up";
  }
  if (plain_.isMadeUp) sentence += "; names are made up";
  return sentence + ".";
}

std::string ReplayReport::aboutWhatWas() const {
  if (total_.was.count() == 0) return "The machine was never held.";
  std::vector<NamedSum> held = names_;
  std::erase_if(held, [](const NamedSum& named) { return named.sum.was.count() == 0; });
  std::ranges::stable_sort(held, std::ranges::greater(),
                           [](const NamedSum& named) { return named.sum.was; });
  Texts parts;
  for (const NamedSum& named : held)
    parts.push_back(named.name + " " + lengthOfTime(named.sum.was));
  return "The machine was held for " + lengthOfTime(total_.was) + ": " + firstTexts(parts) + ".";
}

std::string ReplayReport::aboutDifference() const {
  const std::string how =
      changed_ ? "With " + joinedTexts(settings_, " and ") : std::string("By this version");
  const std::string begin = how + " it would have been held for " + lengthOfTime(total_.would);
  const auto difference = total_.difference();
  if (lost_.empty() && gained_.empty()) return begin + ": no difference.";
  if (gained_.empty()) {
    return begin + ": " + lengthOfTime(-difference) + " less, " + whoseIs(lost_) + ".";
  }
  if (lost_.empty()) {
    return begin + ": " + lengthOfTime(difference) + " more, " + whoseIs(gained_) + ".";
  }
  return begin + ": " + signedLength(difference) + ", some of it earlier and some later.";
}

std::string ReplayReport::whoseIs(const std::vector<Texts>& changes) const {
  const auto isIn = [](const std::string& name) {
    return [&name](const Texts& names) { return std::ranges::find(names, name) != names.end(); };
  };
  std::vector<NamedSum> changed;
  std::ranges::copy_if(names_, std::back_inserter(changed), [&](const NamedSum& named) {
    return std::ranges::any_of(changes, isIn(named.name));
  });
  std::ranges::stable_sort(changed, std::ranges::greater(), [](const NamedSum& named) {
    return std::chrono::abs(named.sum.difference());
  });
  Texts names;
  for (const NamedSum& named : changed)
    names.push_back(named.name);
  return (names.size() == 1 ? "all of it " : "of ") + firstTexts(names);
}

Texts ReplayReport::aboutFaithfulness() const {
  Texts sentences;
  if (plain_.hasUnreadableRest) {
    sentences.emplace_back("The end of the recording cannot be read: it was cut off or damaged.");
  }
  if (isFaithful()) {
    sentences.push_back("As recorded, a replay decides the same at each of " +
                        ticksText(plain_.ticks) + ".");
    return sentences;
  }
  sentences.push_back("As recorded, a replay decides otherwise at " +
                      std::to_string(plain_.differingTicks) + " of " + ticksText(plain_.ticks) +
                      "; the recording was made by " + plain_.program + ".");
  for (const ReplayedDifference& difference : plain_.differences) {
    sentences.push_back("  " + timeOfDay(difference.at) + "  was: " + difference.was +
                        "  replayed: " + difference.would);
  }
  return sentences;
}

Texts ReplayReport::table(tidewell::Text& text) const {
  if (names_.empty()) return {};
  const auto row = [&text](const std::string& name, const std::string& was,
                           const std::string& would, const std::string& difference) {
    return "  " + text.padded(name, kReplayNameWidth) + text.padded(was, kTimeWidth) +
           text.padded(would, kTimeWidth) + difference;
  };
  Texts rows{"", row("", "was", "would be", "difference")};
  for (const auto& [name, sum] : names_) {
    rows.push_back(
        row(name, lengthOfTime(sum.was), lengthOfTime(sum.would), signedLength(sum.difference())));
  }
  rows.push_back(row("held in all", lengthOfTime(total_.was), lengthOfTime(total_.would),
                     signedLength(total_.difference())));
  return rows;
}

std::string ReplayReport::json() const {
  Texts settings;
  for (const std::string& setting : settings_)
    settings.push_back(jsonText(setting));
  Texts names;
  for (const auto& [name, sum] : names_)
    names.push_back(jsonOfSum(sum, &name));
  return JsonObject()
      .addNumber("version", kJsonVersion)
      .addText("program", plain_.program)
      .addNumber("ticks", static_cast<std::int64_t>(plain_.ticks))
      .addNumber("differingTicks", static_cast<std::int64_t>(plain_.differingTicks))
      .addFlag("cutOff", plain_.hasUnreadableRest)
      .addFlag("madeUpNames", plain_.isMadeUp)
      .addNumber("runs", static_cast<std::int64_t>(plain_.runs))
      .addNumber("warmUpSeconds", flooredSeconds(plain_.warmUp))
      .add("settings", jsonList(settings))
      .add("held", jsonOfSum(total_, nullptr))
      .add("names", jsonList(names))
      .add("history", historyJson(timeline(), result().history))
      .text();
}

}  // namespace staylit
