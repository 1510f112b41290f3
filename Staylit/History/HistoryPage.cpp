#include "Staylit/History/HistoryPage.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <utility>

#include "Staylit/History/DayDrawing.h"
#include "Staylit/History/DayTable.h"
#include "Staylit/History/HtmlText.h"
#include "Staylit/History/LocalTimes.h"
#include "Staylit/History/PageParts.h"
#include "Staylit/History/PageTexts.h"

namespace staylit {

using Span = HistoryTimeline::Span;

namespace {

std::string pageHead(const std::string& title) {
  return std::string(
             "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"/>\n"
             "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
             "style-src 'sha256-") +
         PageParts::kStyleHash + "'; script-src 'sha256-" + PageParts::kScriptHash +
         "'; base-uri 'none'; form-action 'none'\"/>\n"
         "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n"
         "<meta name=\"color-scheme\" content=\"light dark\"/>\n"
         "<meta name=\"referrer\" content=\"no-referrer\"/>\n<title>" +
         title + "</title>\n<style>" + PageParts::kStyle + "</style></head>\n<body>\n" +
         PageParts::kPatterns;
}

std::string applicationsText(const HistorySums& sums, std::size_t most) {
  std::string text;
  const std::size_t shown = std::min(most, sums.works.size());
  for (std::size_t index = 0; index < shown; ++index) {
    text += (index == 0 ? ": " : ", ") + htmlName(sums.works[index].display) + " " +
            lengthText(sums.works[index].length);
  }
  if (sums.works.size() > shown) {
    text += " and " + std::to_string(sums.works.size() - shown) + "\u00a0more";
  }
  return text;
}

/// "Asleep from 01:10 to 07:45." or, where there is more than that, how long and how often.
std::string spansSentence(const std::string& what, const std::vector<Span>& spans) {
  constexpr std::size_t kMostTold = 2;
  if (spans.empty()) return "";
  if (spans.size() > kMostTold) {
    return " " + what + " for " + lengthText(lengthOf(spans)) + ", in " +
           std::to_string(spans.size()) + " stretches.";
  }
  std::string text = " " + what + " from ";
  for (std::size_t index = 0; index < spans.size(); ++index)
    text += (index == 0 ? "" : " and from ") + spanText(spans[index]);
  return text + ".";
}

/// What is unusual about the clocks of the day.
std::string clockSentence(const HistoryTimeline& day) {
  const auto length = std::chrono::round<std::chrono::minutes>(day.to - day.from);
  const auto usual = std::chrono::hours(24);
  if (length == usual) return "";
  const bool isShorter = length < usual;
  return std::string(" The clocks were put ") + (isShorter ? "forward" : "back") +
         ": this day lasted " + lengthText(length) + ".";
}

std::string heldSentence(const HistorySums& sums) {
  constexpr std::size_t kMost = 4;
  if (sums.held.count() == 0) {
    return sums.notGranted.count() > 0 ? "No service granted a hold" + applicationsText(sums, kMost)
                                       : "Not held";
  }
  return "Held for " + lengthText(sums.held) + applicationsText(sums, kMost);
}

/// `isAnswered` is whether the page has said already how long the day's holds were.
std::string daySentence(const PageDay& day, bool isAnswered) {
  if (!day.isKnown()) return "Staylit did not run on this day." + clockSentence(day.timeline);
  std::string text = isAnswered ? "" : heldSentence(day.sums) + ".";
  text += spansSentence("Asleep", joined(day.timeline.sleeps));
  text += spansSentence("Staylit did not run", day.gaps());
  return text + clockSentence(day.timeline);
}

/// "22 November 2026"
std::string dateAndYear(const LocalTime& time) {
  return time.date() + " " + std::to_string(time.year);
}

std::string lengthOrNone(std::chrono::nanoseconds length) {
  return length.count() > 0 ? lengthText(length) : "none";
}

std::string sumRow(const HistorySums::Work& sum, std::chrono::nanoseconds longest) {
  using Length = std::chrono::duration<double>;
  const auto part = [longest](std::chrono::nanoseconds length) {
    return percentText(longest.count() > 0 ? Length(length) / Length(longest) : 0);
  };
  const auto onMains = sum.length - sum.onBattery;
  std::string bars = R"(<rect class="work" y="1" height="12" width=")" + part(onMains) + "\"/>";
  if (sum.onBattery.count() > 0) {
    bars += R"(<rect class="batt" y="1" height="12" x=")" + part(onMains) + "\" width=\"" +
            part(sum.onBattery) + "\"/>";
  }
  return "<tr><th scope=\"row\">" + htmlName(sum.display) +
         R"(</th><td class="bar"><svg height="14" aria-hidden="true">)" + bars +
         "</svg></td><td class=\"n\">" + lengthText(sum.length) + "</td><td class=\"n\">" +
         lengthOrNone(sum.onBattery) + "</td></tr>\n";
}

std::string sumsTable(const HistorySums& sums) {
  if (sums.works.empty()) return "";
  std::string text =
      "<h3>What worked</h3>\n<table class=\"sums\" aria-label=\"What worked\"><thead><tr><th "
      "class=\"name\" scope=\"col\">"
      "Application</th><td class=\"bar\"></td><th class=\"n\" scope=\"col\">Worked for</th>"
      "<th class=\"n\" scope=\"col\">of it on battery</th></tr></thead><tbody>\n";
  for (const HistorySums::Work& sum : sums.works)
    text += sumRow(sum, sums.works.front().length);
  return text + "</tbody></table>\n";
}

std::string overviewKey(bool hasGaps) {
  const auto entry = [](const char* box, const char* name) {
    return std::string("<li><svg aria-hidden=\"true\">") + box + "</svg>" + name + "</li>";
  };
  std::string text = "<ul class=\"key\">";
  text += entry(R"(<rect class="held" width="24" height="12"/>)", "held");
  text += entry(R"(<rect class="sleep" width="24" y="4" height="4"/>)", "asleep");
  if (hasGaps) {
    text += entry(R"(<rect class="gap" width="24" height="12"/>)", "Staylit did not run");
  }
  return text + "</ul>\n";
}

std::string weekRow(const PageDay& day) {
  const LocalTime date = LocalTime::of(day.timeline.from);
  const bool isKnown = day.isKnown();
  const std::string nothing = R"(<td class="n">not known</td><td class="n">not known</td>)";
  return R"(<tr><th scope="row" class="day"><a href="#)" + localDate(day.timeline.from) + "\">" +
         date.weekdayName() + " " + std::to_string(date.day) + "</a></th><td class=\"when\">" +
         DayDrawing(day).strip() + "</td>" +
         (isKnown ? "<td class=\"n\">" + lengthOrNone(day.sums.held) + "</td><td class=\"n\">" +
                        lengthOrNone(day.sums.asleep) + "</td>"
                  : nothing) +
         "</tr>\n";
}

}  // namespace

HistoryPage::HistoryPage(std::vector<HistoryTimeline> days, tidewell::WallTime now,
                         std::string version)
    : now_(now), version_(std::move(version)) {
  for (HistoryTimeline& day : days)
    days_.emplace_back(std::move(day), "d" + std::to_string(days_.size()), now);
}

std::vector<HistoryPage::Week> HistoryPage::weeks() const {
  std::vector<Week> weeks;
  CalendarWeek last;
  for (std::size_t index = 0; index < days_.size(); ++index) {
    const CalendarWeek week = CalendarWeek::of(LocalTime::of(days_[index].timeline.from));
    if (weeks.empty() || !(week == last)) weeks.push_back({index, index});
    last = week;
    weeks.back().end = index + 1;
  }
  return weeks;
}

HistorySums HistoryPage::sums(const Week& week) const {
  HistorySums sums;
  for (std::size_t index = week.begin; index < week.end; ++index)
    addTo(sums, days_[index].sums);
  return sums;
}

std::chrono::nanoseconds HistoryPage::unknown(const Week& week) const {
  std::chrono::nanoseconds length{};
  for (std::size_t index = week.begin; index < week.end; ++index)
    length += days_[index].unknown();
  return length;
}

std::string HistoryPage::range(std::size_t begin, std::size_t end) const {
  const LocalTime first = LocalTime::of(days_[begin].timeline.from);
  const LocalTime last = LocalTime::of(days_[end - 1].timeline.from);
  if (begin + 1 == end) return first.date();
  if (first.year != last.year) return dateAndYear(first) + " to " + dateAndYear(last);
  if (first.month == last.month) return std::to_string(first.day) + " to " + last.date();
  return first.date() + " to " + last.date();
}

std::string HistoryPage::answer(const HistorySums& sums) const {
  constexpr std::size_t kMost = 3;
  const bool isUnknown = std::ranges::all_of(days_, [](const auto& day) { return !day.isKnown(); });
  if (isUnknown) return "Nothing was kept: Staylit did not run in this time.";
  const std::string when = isOneDay() ? "" : " in " + std::to_string(days_.size()) + "\u00a0days";
  if (sums.held.count() == 0) return "Nothing kept this computer awake" + when + ".";
  return "Held for " + lengthText(sums.held) + when + applicationsText(sums, kMost) + ".";
}

std::string HistoryPage::more(const HistorySums& sums) const {
  std::string text;
  const auto most =
      std::ranges::max_element(days_, {}, [](const PageDay& day) { return day.sums.held; });
  if (!isOneDay() && sums.held.count() > 0) {
    const LocalTime day = LocalTime::of(most->timeline.from);
    text += " Most on " + day.weekdayName() + " " + day.date() + " (" +
            lengthText(most->sums.held) + ").";
  }
  if (sums.heldOnBattery.count() > 0) {
    text += " Of the hold " + lengthText(sums.heldOnBattery) + " were on battery.";
  }
  if (sums.notGranted.count() > 0) {
    text += " No service granted the hold for " + lengthText(sums.notGranted) + " more.";
  }
  if (isOneDay()) return text;  // The day itself has the rest.
  if (sums.asleep.count() > 0) text += " Asleep for " + lengthText(sums.asleep) + ".";
  if (const auto length = unknown({0, days_.size()}); length.count() > 0) {
    text += " Staylit did not run for " + lengthText(length) + ", of which nothing is known.";
  }
  return text;
}

std::string HistoryPage::header() const {
  const HistorySums all = sums({0, days_.size()});
  const LocalTime first = LocalTime::of(days_.front().timeline.from);
  const LocalTime last = LocalTime::of(days_.back().timeline.from);
  const std::string year = first.year == last.year ? " " + std::to_string(last.year) : "";
  const std::string when =
      (isOneDay() ? last.weekdayName() + " " : "") + range(0, days_.size()) + year;
  return pageHead("Staylit: what kept this computer awake, " + when) +
         "<a class=\"skip\" href=\"#main\">Skip to the history</a>\n<header><h1>" +
         PageParts::kCup + "<span>What kept this computer awake · " + when +
         "</span></h1>\n<p class=\"answer\">" + answer(all) + "</p>\n<p class=\"more\">" +
         more(all) + "</p></header>\n<main id=\"main\">\n";
}

std::string HistoryPage::weekSection(const Week& week) const {
  const CalendarWeek named = CalendarWeek::of(LocalTime::of(days_[week.begin].timeline.from));
  const std::string id = "w" + std::to_string(week.begin);
  const HistorySums sums = this->sums(week);
  std::string text =
      "<section aria-labelledby=\"" + id + "\"><h2 id=\"" + id + "\">Week " +
      std::to_string(named.number) + " <span class=\"s\">" + range(week.begin, week.end) +
      "</span></h2>\n<table class=\"week\" aria-label=\"The days of the week\"><thead><tr>"
      "<th class=\"day\" scope=\"col\">Day</th><td class=\"when\">" +
      DayDrawing(days_[week.begin]).hours() +
      "</td><th class=\"n\" scope=\"col\">Held</th>"
      "<th class=\"n\" scope=\"col\">Asleep</th></tr></thead><tbody>\n";
  for (std::size_t index = week.end; index > week.begin; --index)
    text += weekRow(days_[index - 1]);
  text += "</tbody></table>\n" + overviewKey(unknown(week).count() > 0) + sumsTable(sums) +
          "</section>\n";
  for (std::size_t index = week.end; index > week.begin; --index)
    text += daySection(days_[index - 1]);
  return text;
}

std::string HistoryPage::daySection(const PageDay& day) const {
  const LocalTime date = LocalTime::of(day.timeline.from);
  const std::string level = isOneDay() ? "h2" : "h3";
  std::string text = R"(<section class="day"><div class="top"><)" + level + " id=\"" +
                     localDate(day.timeline.from) + "\">" + date.weekdayName() + " " + date.date() +
                     "</" + level + ">\n<p>" + daySentence(day, isOneDay()) + "</p>\n";
  if (!day.isKnown()) return text + "</div></section>\n";
  text += DayDrawing(day).lanes() + "</div><details" + (isOneDay() ? " open=\"open\"" : "") +
          "><summary>Line by line<span class=\"hide\">, " + date.weekdayName() + " " + date.date() +
          "</span></summary>\n" + DayTable::of(day) + "</details></section>\n";
  return text;
}

std::string HistoryPage::footer() const {
  const LocalTime made = LocalTime::of(now_);
  return "</main>\n<footer><p>Written by " + htmlText(version_) + " on " + dateAndYear(made) +
         " at " + hourAndMinute(now_) +
         ". All times are this computer’s. In a drawing, the arrow keys go from mark to mark, and "
         "Return goes to its line. This page loads nothing and sends nothing.</p></footer>\n";
}

std::string HistoryPage::text() const {
  if (days_.empty()) return "";
  std::string text = header();
  // All drawings use them, in whichever order they stand.
  text += R"(<svg class="hide" aria-hidden="true"><defs>)";
  for (const PageDay& day : days_)
    text += DayDrawing(day).background();
  text += "</defs></svg>\n";
  const std::vector<Week> all = weeks();
  if (isOneDay()) {
    text += daySection(days_.front());
  } else {
    for (std::size_t index = all.size(); index > 0; --index)
      text += weekSection(all[index - 1]);
  }
  return text + footer() + "<script>" + PageParts::kScript + "</script></body></html>\n";
}

}  // namespace staylit
