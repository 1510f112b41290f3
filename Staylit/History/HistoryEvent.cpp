#include "Staylit/History/HistoryEvent.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <iterator>
#include <utility>

#include "Staylit/JsonText.h"
#include "Staylit/JsonValue.h"
#include "Tidewell/ForeignText.h"
#include "Tidewell/TextReading.h"

namespace staylit {

using std::chrono::milliseconds;
using tidewell::Moment;
using tidewell::WallTime;

namespace {

/// A double holds every whole number up to here.
constexpr double kLargestWholeNumber = 9'007'199'254'740'992.0;

using HistoryNames = std::vector<std::string>;

// Writing.

/// "2026-11-22T09:31:04.125Z", on any thread.
std::string historyTime(WallTime time) {
  const auto whole = std::chrono::floor<milliseconds>(time);
  const auto day = std::chrono::floor<std::chrono::days>(whole);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(whole - day);
  std::array<char, 80> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", int{date.year()},
                unsigned{date.month()}, unsigned{date.day()},
                static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()),
                static_cast<int>(clock.subseconds().count()));
  return text.data();
}

std::string textList(const HistoryNames& names) {
  HistoryNames texts;
  std::ranges::transform(names, std::back_inserter(texts),
                         [](const std::string& name) { return jsonText(name); });
  return jsonList(texts);
}

std::string textOfFigures(const WorkFigures& figures) {
  return jsonList({jsonDecimal(figures.cpuPercent), jsonDecimal(figures.diskKBps),
                   jsonDecimal(figures.netKBps)});
}

/// Adds the members that one kind of event has.
struct MembersOf {
  JsonObject& object;

  void operator()(const HistoryEvent::Started& started) const {
    object.addText("version", started.version);
    if (started.lastSeen) object.addText("lastSeen", historyTime(*started.lastSeen));
  }
  void operator()(const HistoryEvent::StateChanged& changed) const {
    object.addText("state", nameOf(changed.state));
    if (!changed.reason.empty()) object.addText("reason", changed.reason);
    if (!changed.names.empty()) object.add("names", textList(changed.names));
    if (!changed.services.empty()) object.add("services", textList(changed.services));
  }
  void operator()(const HistoryEvent::WorkBegan& began) const {
    object.addText("key", began.key)
        .addText("name", began.display)
        .addText("category", rawValue(began.category))
        .add("overFor", jsonDecimal(began.overForSeconds))
        .add("figures", textOfFigures(began.figures));
  }
  void operator()(const HistoryEvent::WorkEnded& ended) const {
    object.addText("key", ended.key)
        .add("peak", textOfFigures(ended.peak))
        .add("mean", textOfFigures(ended.mean));
  }
  void operator()(const HistoryEvent::AskingChanged& changed) const {
    object.add("names", textList(changed.names));
    if (!changed.words.empty()) object.add("words", textList(changed.words));
  }
  void operator()(const HistoryEvent::PowerChanged& changed) const {
    object.addFlag("onAC", changed.power.onAC)
        .addFlag("hasBattery", changed.power.hasBattery)
        .addNumber("percent", changed.power.percentage)
        .addFlag("lowPowerMode", changed.power.lowPowerMode);
  }
  void operator()(const HistoryEvent::LidMoved& moved) const {
    object.addFlag("closed", moved.isClosed);
  }
  void operator()(const HistoryEvent::LidHoldChanged& changed) const {
    object.addFlag("held", changed.isHeld);
  }
  void operator()(const HistoryEvent::SettingChanged& changed) const {
    object.addText("key", changed.key).addText("from", changed.from).addText("to", changed.to);
  }
  void operator()(const HistoryEvent::Stopped&) const {}
  void operator()(const HistoryEvent::FellAsleep&) const {}
  void operator()(const HistoryEvent::WokeUp&) const {}
  void operator()(const HistoryEvent::ClockSet&) const {}
};

/// In the order of `HistoryEvent::What`.
constexpr std::array<std::string_view, std::variant_size_v<HistoryEvent::What>> kHistoryKinds = {
    "started", "stopped", "state", "workBegan", "workEnded", "asking",  "power",
    "slept",   "woke",    "lid",   "lidHold",   "setting",   "clockSet"};

// Reading.

/// The number that the digits before `mark` are; takes both off.
std::optional<int> takeField(std::string_view& text, std::size_t digits, char mark) {
  if (text.size() <= digits || text[digits] != mark) return std::nullopt;
  const auto value = tidewell::wholeNumber<unsigned>(text.substr(0, digits));
  text.remove_prefix(digits + 1);
  if (!value) return std::nullopt;
  return static_cast<int>(*value);
}

std::optional<WallTime> wallTimeIn(std::string_view text) {
  namespace chrono = std::chrono;
  const auto year = takeField(text, 4, '-');
  const auto month = takeField(text, 2, '-');
  const auto day = takeField(text, 2, 'T');
  const auto hour = takeField(text, 2, ':');
  const auto minute = takeField(text, 2, ':');
  const auto second = takeField(text, 2, '.');
  const auto thousandths = takeField(text, 3, 'Z');
  if (!year || !month || !day || !hour || !minute || !second || !thousandths) return std::nullopt;
  const auto date = chrono::year(*year) / *month / *day;
  // What a clock of 64 bits in nanoseconds can say ends in 2262.
  constexpr int kFirstYear = 1900;
  constexpr int kLastYear = 2200;
  if (!text.empty() || !date.ok() || *year < kFirstYear || *year > kLastYear) return std::nullopt;
  if (*hour > 23 || *minute > 59 || *second > 60) return std::nullopt;
  return chrono::sys_days(date) + chrono::hours(*hour) + chrono::minutes(*minute) +
         chrono::seconds(*second) + milliseconds(*thousandths);
}

/// Reads the members of one event. What is absent or has another type reads as nothing.
class EventMembers {
 public:
  explicit EventMembers(const JsonValue& object) : object_(object) {}

  [[nodiscard]] std::string text(std::string_view key) const {
    const JsonValue* value = object_.member(key);
    const std::string* text = value ? value->text() : nullptr;
    return text ? tidewell::cleaned(*text) : std::string();
  }

  [[nodiscard]] double number(std::string_view key) const {
    const JsonValue* value = object_.member(key);
    return value ? value->number().value_or(0) : 0;
  }

  [[nodiscard]] std::optional<std::int64_t> wholeNumber(std::string_view key) const {
    const JsonValue* value = object_.member(key);
    const auto number = value ? value->number() : std::nullopt;
    const bool isWhole =
        number && *number >= -kLargestWholeNumber && *number <= kLargestWholeNumber;
    return isWhole ? std::optional(static_cast<std::int64_t>(*number)) : std::nullopt;
  }

  [[nodiscard]] std::optional<bool> flag(std::string_view key) const {
    const JsonValue* value = object_.member(key);
    return value ? value->flag() : std::nullopt;
  }

  [[nodiscard]] HistoryNames names(std::string_view key) const {
    HistoryNames names;
    const JsonValue* value = object_.member(key);
    const JsonValue::List* list = value ? value->list() : nullptr;
    if (!list) return names;
    for (const JsonValue& element : *list) {
      if (element.text()) names.push_back(tidewell::cleaned(*element.text()));
    }
    return names;
  }

  [[nodiscard]] WorkFigures figures(std::string_view key) const {
    const JsonValue* value = object_.member(key);
    const JsonValue::List* list = value ? value->list() : nullptr;
    const auto at = [list](std::size_t place) {
      return list && place < list->size() ? (*list)[place].number().value_or(0) : 0;
    };
    return {at(0), at(1), at(2)};
  }

 private:
  const JsonValue& object_;
};

using EventContent = std::optional<HistoryEvent::What>;

EventContent startedIn(const EventMembers& members) {
  return HistoryEvent::Started{members.text("version"), wallTimeIn(members.text("lastSeen"))};
}

EventContent stateIn(const EventMembers& members) {
  const auto state = stateNamed(members.text("state"));
  if (!state) return std::nullopt;
  return HistoryEvent::StateChanged{*state, members.text("reason"), members.names("names"),
                                    members.names("services")};
}

EventContent workBeganIn(const EventMembers& members) {
  const std::string key = members.text("key");
  if (key.empty()) return std::nullopt;
  const auto category = tidewell::appCategoryFromRawValue(members.text("category"));
  const std::string name = members.text("name");
  return HistoryEvent::WorkBegan{key, name.empty() ? key : name,
                                 category.value_or(tidewell::AppCategory::other),
                                 members.number("overFor"), members.figures("figures")};
}

EventContent workEndedIn(const EventMembers& members) {
  const std::string key = members.text("key");
  if (key.empty()) return std::nullopt;
  return HistoryEvent::WorkEnded{key, members.figures("peak"), members.figures("mean")};
}

EventContent askingIn(const EventMembers& members) {
  HistoryEvent::AskingChanged changed{members.names("names"), members.names("words")};
  if (changed.words.size() != changed.names.size()) changed.words.clear();
  return changed;
}

EventContent powerIn(const EventMembers& members) {
  const auto onAC = members.flag("onAC");
  const auto percent = members.wholeNumber("percent");
  if (!onAC || !percent) return std::nullopt;
  return HistoryEvent::PowerChanged{{*onAC, *percent, members.flag("lowPowerMode").value_or(false),
                                     members.flag("hasBattery").value_or(false)}};
}

EventContent lidIn(const EventMembers& members) {
  const auto isClosed = members.flag("closed");
  return isClosed ? EventContent(HistoryEvent::LidMoved{*isClosed}) : std::nullopt;
}

EventContent lidHoldIn(const EventMembers& members) {
  const auto isHeld = members.flag("held");
  return isHeld ? EventContent(HistoryEvent::LidHoldChanged{*isHeld}) : std::nullopt;
}

EventContent settingIn(const EventMembers& members) {
  const std::string key = members.text("key");
  if (key.empty()) return std::nullopt;
  return HistoryEvent::SettingChanged{key, members.text("from"), members.text("to")};
}

EventContent contentOf(std::string_view kind, const EventMembers& members) {
  if (kind == "started") return startedIn(members);
  if (kind == "stopped") return HistoryEvent::Stopped{};
  if (kind == "state") return stateIn(members);
  if (kind == "workBegan") return workBeganIn(members);
  if (kind == "workEnded") return workEndedIn(members);
  if (kind == "asking") return askingIn(members);
  if (kind == "power") return powerIn(members);
  if (kind == "slept") return HistoryEvent::FellAsleep{};
  if (kind == "woke") return HistoryEvent::WokeUp{};
  if (kind == "lid") return lidIn(members);
  if (kind == "lidHold") return lidHoldIn(members);
  if (kind == "setting") return settingIn(members);
  if (kind == "clockSet") return HistoryEvent::ClockSet{};
  return std::nullopt;
}

}  // namespace

std::string textOf(const HistoryEvent& event) {
  const auto moment = std::chrono::floor<milliseconds>(event.moment.time_since_epoch());
  JsonObject object;
  object.addText("at", historyTime(event.at))
      .addNumber("run", event.run)
      .addNumber("ms", moment.count())
      .addText("kind", kHistoryKinds[event.what.index()]);
  std::visit(MembersOf{object}, event.what);
  return object.text();
}

std::optional<HistoryEvent> historyEvent(std::string_view line) {
  const auto object = JsonValue::read(line);
  if (!object) return std::nullopt;
  const EventMembers members(*object);
  const auto at = wallTimeIn(members.text("at"));
  const auto run = members.wholeNumber("run");
  const auto moment = members.wholeNumber("ms");
  constexpr std::int64_t kLongestMoment = 1'000'000'000'000;  // Some thirty years.
  if (!at || !run || !moment || *moment < 0 || *moment > kLongestMoment) return std::nullopt;
  auto what = contentOf(members.text("kind"), members);
  if (!what) return std::nullopt;
  return HistoryEvent{*at, Moment(milliseconds(*moment)), *run, std::move(*what)};
}

}  // namespace staylit
