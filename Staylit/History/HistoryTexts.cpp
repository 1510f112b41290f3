#include "Staylit/History/HistoryTexts.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "Staylit/History/HistoryBar.h"
#include "Staylit/History/HistorySums.h"
#include "Staylit/History/LocalTimes.h"
#include "Staylit/TimeTexts.h"

namespace staylit {

using tidewell::WallTime;

namespace {

using TextEnding = HistoryTimeline::Ending;
using TimelineSpan = HistoryTimeline::Span;

constexpr std::size_t kMostNamesInASentence = 4;

std::string writtenLength(std::chrono::nanoseconds length) {
  return lengthOfTime(tidewell::Seconds(length));
}

// The summary.

std::string inASentence(const std::vector<std::string>& parts) {
  std::string text;
  for (std::size_t index = 0; index < parts.size() && index < kMostNamesInASentence; ++index)
    text += (index == 0 ? "" : ", ") + parts[index];
  if (parts.size() > kMostNamesInASentence) {
    text += " and " + std::to_string(parts.size() - kMostNamesInASentence) + " more";
  }
  return text;
}

/// "today", or the days that the timeline is about.
std::string whenOf(const HistoryTimeline& timeline, WallTime now) {
  const LocalDay first = localDayOf(timeline.from);
  const LocalDay last = localDayOf(timeline.to - std::chrono::nanoseconds(1));
  const bool isWhole = timeline.from == first.from && timeline.to >= std::min(last.to, now);
  const LocalDay today = localDayOf(now);
  if (isWhole && first == last && first == today) return "today";
  if (isWhole && first == last && first.to == today.from) return "yesterday";
  if (isWhole && first == last) return "on " + localDate(first.from);
  if (isWhole) return "from " + localDate(first.from) + " to " + localDate(last.from);
  const std::string end =
      timeline.to >= now ? "now" : localDate(timeline.to) + " " + hourAndMinute(timeline.to);
  return "from " + localDate(timeline.from) + " " + hourAndMinute(timeline.from) + " to " + end;
}

std::string whoWorked(const HistorySums& sums) {
  std::vector<std::string> parts;
  for (const auto& work : sums.works)
    parts.push_back(work.display + " " + writtenLength(work.length));
  for (const auto& asking : sums.askings)
    parts.push_back(asking.name + ", which asked, " + writtenLength(asking.length));
  return parts.empty() ? "no work, only the wait for it" : inASentence(parts);
}

std::string capital(std::string text) {
  if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') text[0] = static_cast<char>(text[0] - 32);
  return text;
}

std::string sleepSentence(const HistoryTimeline& timeline, const HistorySums& sums) {
  if (timeline.sleeps.empty()) return "";
  if (timeline.sleeps.size() > 1) {
    return " Asleep " + std::to_string(timeline.sleeps.size()) + " times, for " +
           writtenLength(sums.asleep) + " in all.";
  }
  const TimelineSpan& sleep = timeline.sleeps.front();
  const std::string from = sleep.beganEarlier ? "" : " from " + hourAndMinute(sleep.from);
  const bool isOver = sleep.ending == TextEnding::ended;
  return " Asleep" + from + (isOver ? " until " + hourAndMinute(sleep.to) : "") + ".";
}

std::string blockSentence(const HistoryTimeline& timeline, const HistorySums& sums) {
  if (timeline.blocks.empty()) return "";
  std::vector<std::string> reasons;
  for (const auto& block : timeline.blocks) {
    if (std::ranges::find(reasons, block.reason) == reasons.end()) reasons.push_back(block.reason);
  }
  return " Forbidden to hold for " + writtenLength(sums.blocked) + ": " + inASentence(reasons) +
         ".";
}

/// Nobody knows what happened while the program was not there.
std::string gapSentence(const HistoryTimeline& timeline, const HistorySums& sums, WallTime now) {
  const auto range = std::min(timeline.to, now) - timeline.from;
  const auto gap = range - sums.running;
  if (gap < std::chrono::minutes(1)) return "";
  return " Staylit did not run for " + writtenLength(gap) + ".";
}

// The lines of a day.

/// Something that began at a time, and its line.
struct HistoryEntry {
  WallTime at;
  std::string text;
};

std::string endText(const TimelineSpan& span, const LocalDay& day) {
  if (span.ending == TextEnding::open) return "now  ";
  return span.to >= day.to ? "24:00" : hourAndMinute(span.to);
}

std::string padded(std::string text, std::size_t length) {
  text.resize(std::max(text.size(), length), ' ');
  return text;
}

std::string rowText(const TimelineSpan& span, const LocalDay& day, const std::string& what,
                    const std::string& more, HistoryTexts::Style style) {
  constexpr std::size_t kLengthOfLength = 12;
  std::string text = hourAndMinute(span.from) + (style.isUnicode ? "\u2013" : "-") +
                     endText(span, day) + "  " + padded(what, 8) + " " +
                     padded(writtenLength(span.length()), kLengthOfLength) + more;
  if (span.ending == TextEnding::lost) text += more.empty() ? "then" : "; then";
  if (span.ending == TextEnding::lost) text += " Staylit was killed, or the machine lost its power";
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

std::string pointText(WallTime at, const std::string& text) {
  return hourAndMinute(at) + "        " + text;
}

std::string figureText(double value, const char* unit) {
  return std::to_string(std::llround(std::clamp(value, 0.0, 1e15))) + unit;
}

/// The figures that are not nothing.
std::string figuresText(const WorkFigures& figures) {
  constexpr double kNothing = 0.5;
  std::string text;
  const auto add = [&text](double value, const char* unit) {
    if (value >= kNothing) text += (text.empty() ? "" : " ") + figureText(value, unit);
  };
  add(figures.cpuPercent, "% CPU");
  add(figures.diskKBps, " KB/s disk");
  add(figures.netKBps, " KB/s net");
  return text.empty() ? "0% CPU" : text;
}

std::string workText(const HistoryTimeline::Work& work) {
  std::string text = work.peak ? "" : figuresText(work.start) + " at first";
  if (work.mean) text += "mean " + figuresText(*work.mean);
  if (work.peak) text += ", peak " + figuresText(*work.peak);
  if (work.onBattery >= std::chrono::minutes(1)) {
    text += "; " + writtenLength(work.onBattery) + " on battery";
  }
  return text;
}

std::string reasonsOf(const HistoryTimeline::Hold& hold) {
  std::vector<std::string> reasons;
  bool isRefused = false;
  for (const auto& part : hold.parts) {
    if (std::ranges::find(reasons, part.reason) == reasons.end()) reasons.push_back(part.reason);
    isRefused = isRefused || !part.isGranted();
  }
  std::string text;
  for (const std::string& reason : reasons)
    text += (text.empty() ? "" : "; ") + reason;
  return text + (isRefused ? " (for a time, no service granted it)" : "");
}

/// Makes the entries of one day, in the order in which things began.
class DayEntries {
 public:
  /// `timeline` has nothing of other days: what it measures would stand on this day's lines.
  DayEntries(const HistoryTimeline& timeline, const LocalDay& day, HistoryTexts::Style style)
      : day_(day), style_(style) {
    addRuns(timeline);
    for (const auto& hold : timeline.holds)
      add(hold.span, isGranted(hold) ? "held" : "refused", reasonsOf(hold));
    for (const auto& work : timeline.works)
      add(work.span, "work", work.display + ": " + workText(work));
    for (const auto& asking : timeline.askings)
      add(asking.span, "asked", asking.name + asking.wordsInBrackets());
    for (const auto& block : timeline.blocks)
      add(block.span, "blocked", block.reason);
    addAll(timeline.pauses, "paused");
    addAll(timeline.sleeps, "asleep");
    addBatteries(timeline);
    addAll(timeline.lidClosed, "lid", "closed");
    addAll(timeline.lidHolds, "lid", "a closed lid does not put the machine to sleep");
    for (const auto& setting : timeline.settings) {
      addPoint(setting.at, "setting " + setting.key + ": " + quoted(setting.from) + " became " +
                               quoted(setting.to));
    }
    for (const auto& set : timeline.clockSets)
      addPoint(set.at, "the clock was set");
    std::ranges::stable_sort(entries_, {}, &HistoryEntry::at);
  }

  [[nodiscard]] std::vector<std::string> lines() const {
    std::vector<std::string> lines;
    for (const HistoryEntry& entry : entries_)
      lines.push_back(entry.text);
    return lines;
  }

 private:
  static bool isGranted(const HistoryTimeline::Hold& hold) {
    return std::ranges::any_of(hold.parts, [](const auto& part) { return part.isGranted(); });
  }

  static std::string quoted(const std::string& value) { return value.empty() ? "nothing" : value; }

  void addRuns(const HistoryTimeline& timeline) {
    for (const auto& run : timeline.runs) {
      const std::string version = run.version.empty() ? "" : " " + run.version;
      if (!run.span.beganEarlier) addPoint(run.span.from, "Staylit" + version + " started");
      if (run.span.ending == TextEnding::ended) addPoint(run.span.to, "Staylit ended");
    }
  }

  void addBatteries(const HistoryTimeline& timeline) {
    for (const TimelineSpan& span : timeline.onBattery) {
      std::string from;
      std::string to;
      using Charge = HistoryTimeline::Charge;
      auto charge = std::ranges::lower_bound(timeline.charges, span.from, {}, &Charge::at);
      for (; charge != timeline.charges.end() && charge->at <= span.to; ++charge) {
        to = std::to_string(charge->power.percentage) + "%";
        if (from.empty()) from = to;
      }
      if (from != to) from.append(" to ").append(to);
      add(span, "battery", from);
    }
  }

  void addAll(const std::vector<TimelineSpan>& spans, const std::string& what,
              const std::string& more = "") {
    for (const TimelineSpan& span : spans)
      add(span, what, more);
  }

  void add(const TimelineSpan& span, const std::string& what, const std::string& more) {
    entries_.push_back({span.from, rowText(span, day_, what, more, style_)});
  }

  void addPoint(WallTime at, const std::string& text) {
    if (at >= day_.from && at < day_.to) entries_.push_back({at, pointText(at, text)});
  }

  LocalDay day_;
  HistoryTexts::Style style_;
  std::vector<HistoryEntry> entries_;
};

/// The days in which the program ran; the others have nothing, and may be very many.
std::vector<LocalDay> daysWithRuns(const HistoryTimeline& timeline, WallTime now) {
  std::vector<LocalDay> days;
  for (const auto& run : timeline.runs) {
    const WallTime end = std::min(run.span.to, now) + std::chrono::nanoseconds(1);
    for (const LocalDay& day : localDaysBetween(run.span.from, end)) {
      if (days.empty() || day.from > days.back().from) days.push_back(day);
    }
  }
  return days;
}

/// The part of `day` that lies between `from` and `to`.
HistoryTimeline partOf(const LocalDay& day, const History& history, WallTime from, WallTime to) {
  return timelineOf(history, std::max(day.from, from), std::min(day.to, to));
}

}  // namespace

std::string HistoryTexts::summary(const HistoryTimeline& timeline, WallTime now) {
  if (timeline.from >= now && timeline.runs.empty()) {
    return "The time from " + localDate(timeline.from) + " " + hourAndMinute(timeline.from) +
           " on is still to come.";
  }
  const HistorySums sums = sumsOf(timeline);
  const std::string when = whenOf(timeline, now);
  const bool isHeld = sums.held > HistorySums::Length::zero();
  std::string text =
      isHeld ? "Held for " + writtenLength(sums.held) + " " + when + ": " + whoWorked(sums) + "."
             : capital("not held " + when + ".");
  if (sums.notGranted > HistorySums::Length::zero()) {
    text += " For " + writtenLength(sums.notGranted) + " no service granted the hold.";
  }
  text += blockSentence(timeline, sums);
  if (!timeline.pauses.empty()) text += " Paused for " + writtenLength(sums.paused) + ".";
  return text + sleepSentence(timeline, sums) + gapSentence(timeline, sums, now);
}

std::vector<std::string> HistoryTexts::lines(const History& history, WallTime from, WallTime to,
                                             Style style) {
  const HistoryTimeline whole = timelineOf(history, from, to);
  std::vector<std::string> lines{summary(whole, history.now)};
  for (const LocalDay& day : daysWithRuns(whole, history.now)) {
    const HistoryTimeline timeline = partOf(day, history, from, to);
    const std::vector<std::string> entries = DayEntries(timeline, day, style).lines();
    if (entries.empty()) continue;
    lines.emplace_back();
    lines.push_back(longLocalDate(day.from));
    lines.emplace_back();
    for (std::string& line : historyBar(timeline, day, style))
      lines.push_back(std::move(line));
    lines.emplace_back();
    lines.insert(lines.end(), entries.begin(), entries.end());
  }
  return lines;
}

}  // namespace staylit
