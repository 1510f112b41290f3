#include "Staylit/History/DayDrawing.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

#include "Staylit/History/DayTable.h"
#include "Staylit/History/HtmlText.h"
#include "Staylit/History/LocalTimes.h"
#include "Staylit/History/PageTexts.h"

namespace staylit {

using Span = HistoryTimeline::Span;
using tidewell::WallTime;

namespace {

/// More lanes than that show less.
constexpr std::size_t kMostApplications = 10;
/// A shorter mark could not be seen: about two minutes of a day.
constexpr double kShortestMark = 0.0016;
constexpr int kLaneHeight = 22;
constexpr int kChargeHeight = 44;

std::string svgAttribute(std::string_view name, std::string_view value) {
  return " " + std::string(name) + "=\"" + std::string(value) + "\"";
}

/// A run of parts of a hold that differ in nothing that is drawn.
struct HoldMark {
  Span span;
  std::string_view look;
  std::string reason;
};

std::string_view holdLook(const HistoryTimeline::Hold::Part& part) {
  if (!part.isGranted()) return "want";
  return part.state == StatusReport::State::winding ? "grace" : "held";
}

std::vector<HoldMark> holdMarks(const HistoryTimeline::Hold& hold) {
  std::vector<HoldMark> marks;
  for (const HistoryTimeline::Hold::Part& part : hold.parts) {
    const std::string_view look = holdLook(part);
    if (marks.empty() || marks.back().look != look || marks.back().reason != part.reason) {
      marks.push_back(
          {{part.from, part.to, false, HistoryTimeline::Ending::ended}, look, part.reason});
    }
    marks.back().span.to = part.to;
  }
  if (!marks.empty()) marks.back().span.ending = hold.span.ending;
  return marks;
}

std::string holdSaid(const HoldMark& mark) {
  const std::string when = spanText(mark.span) + " (" + lengthText(mark.span.length()) + ")";
  const std::string what = mark.look == "want" ? "A hold that nobody granted, " : "Held ";
  return what + when + ": " + htmlText(mark.reason);
}

std::vector<Span> workSpans(const std::vector<HistoryTimeline::Work>& works) {
  std::vector<Span> spans;
  spans.reserve(works.size());
  for (const HistoryTimeline::Work& work : works)
    spans.push_back(work.span);
  return spans;
}

/// A whole hour of the day, and where it begins.
struct Hour {
  WallTime at;
  int number;
};

/// Each hour that begins within the day. One that the clocks repeat is there twice, and one that
/// they skip is not there.
std::vector<Hour> hoursOfDay(const HistoryTimeline& timeline) {
  constexpr auto kStep = std::chrono::minutes(15);
  std::vector<Hour> hours;
  for (WallTime at = timeline.from; at < timeline.to; at += kStep) {
    const LocalTime local = LocalTime::of(at);
    if (local.minute == 0) hours.push_back({at, local.hour});
  }
  return hours;
}

}  // namespace

double DayDrawing::fraction(WallTime time) const {
  using Length = std::chrono::duration<double>;
  const Length whole = day_.timeline.to - day_.timeline.from;
  return whole.count() > 0 ? Length(time - day_.timeline.from) / whole : 0;
}

std::string DayDrawing::box(std::string_view look, const Span& span, int top, int height) const {
  const double from = std::min(fraction(span.from), 1 - kShortestMark);
  const double width = std::max(fraction(span.to) - from, kShortestMark);
  return "<rect" + svgAttribute("class", look) + svgAttribute("x", percentText(from)) +
         svgAttribute("y", std::to_string(top)) + svgAttribute("width", percentText(width)) +
         svgAttribute("height", std::to_string(height)) + "/>";
}

std::string DayDrawing::mark(std::string_view look, const Span& span, const std::string& row,
                             const std::string& text) const {
  constexpr int kTop = 3;
  std::string rectangle = box(look, span, kTop, kLaneHeight - 2 * kTop);
  return "<a" + svgAttribute("href", "#" + row) + ">" + rectangle + "<title>" + text +
         "</title></a>";
}

std::string DayDrawing::background() const {
  std::string text = "<g" + svgAttribute("id", day_.id + "g") + ">";
  text += R"(<rect class="bg" width=")" + percentText(fraction(day_.knownUntil())) +
          R"(" height="100%"/>)";
  constexpr int kEvery = 3;
  for (const Hour& hour : hoursOfDay(day_.timeline)) {
    if (hour.number % kEvery != 0 || hour.at == day_.timeline.from) continue;
    const std::string x = percentText(fraction(hour.at));
    text += "<line class=\"g\"" + svgAttribute("x1", x) + svgAttribute("x2", x) + " y2=\"100%\"/>";
  }
  for (const Span& gap : day_.gaps()) {
    text += "<rect class=\"gap\"" + svgAttribute("x", percentText(fraction(gap.from))) +
            svgAttribute("width", percentText(fraction(gap.to) - fraction(gap.from))) +
            " height=\"100%\"/>";
  }
  if (day_.now < day_.timeline.to && day_.now > day_.timeline.from) {
    const std::string x = percentText(fraction(day_.now));
    text +=
        "<line class=\"now\"" + svgAttribute("x1", x) + svgAttribute("x2", x) + " y2=\"100%\"/>";
  }
  return text + "</g>";
}

std::string DayDrawing::hours() const {
  constexpr int kEvery = 3;
  constexpr int kMain = 6;
  std::string text = R"(<svg class="hours" height="14" role="img" aria-label="Hours of the day">)";
  int last = -1;
  for (const Hour& hour : hoursOfDay(day_.timeline)) {
    if (hour.number % kEvery != 0 || hour.number == last) continue;
    last = hour.number;
    text += std::string("<text") + (hour.number % kMain != 0 ? " class=\"odd\"" : "") +
            svgAttribute("x", percentText(fraction(hour.at))) + " y=\"11\"" +
            (hour.at == day_.timeline.from ? "" : " text-anchor=\"middle\"") + ">" +
            hourAndMinute(hour.at).substr(0, 2) + "</text>";
  }
  return text + R"(<text x="100%" y="11" text-anchor="end">24</text></svg>)";
}

std::string DayDrawing::laneRow(const Lane& lane) const {
  return std::string("<tr role=\"row\"") + (lane.beginsGroup ? " class=\"rule\"" : "") +
         R"(><th scope="row" role="rowheader">)" + lane.name +
         R"(</th><td class="when" role="cell"><svg)" +
         svgAttribute("height", std::to_string(kLaneHeight)) + " class=\"lane\"><use" +
         svgAttribute("href", "#" + day_.id + "g") + "/>" + lane.marks +
         R"(</svg></td><td class="sum" role="cell">)" + lane.sum + "</td></tr>\n";
}

DayDrawing::Lane DayDrawing::holds() const {
  Lane lane{"<b>Held</b>", "", lengthText(day_.sums.held)};
  const auto& holds = day_.timeline.holds;
  for (std::size_t index = 0; index < holds.size(); ++index) {
    for (const HoldMark& each : holdMarks(holds[index]))
      lane.marks += mark(each.look, each.span, DayTable::row(day_.id, 'h', index), holdSaid(each));
  }
  if (day_.sums.notGranted.count() > 0) {
    lane.sum += "<small>" + lengthText(day_.sums.notGranted) + " more not granted</small>";
  } else if (day_.sums.heldOnBattery.count() > 0) {
    lane.sum += "<small>" + lengthText(day_.sums.heldOnBattery) + " on battery</small>";
  }
  return lane;
}

DayDrawing::Lane DayDrawing::works(const HistorySums::Work& sum) const {
  Lane lane{htmlName(sum.display), "", lengthText(sum.length)};
  const auto& works = day_.timeline.works;
  for (std::size_t index = 0; index < works.size(); ++index) {
    if (works[index].key != sum.key) continue;
    lane.marks += mark("work", works[index].span, DayTable::row(day_.id, 'w', index),
                       DayTable::saidOf(works[index]));
  }
  if (sum.onBattery.count() > 0) {
    lane.sum += "<small>" + lengthText(sum.onBattery) + " on battery</small>";
  }
  return lane;
}

DayDrawing::Lane DayDrawing::otherWorks(std::size_t shown) const {
  const auto& applications = day_.sums.works;
  const std::string name = std::to_string(applications.size() - shown) + " others";
  std::vector<HistoryTimeline::Work> others;
  std::optional<std::size_t> first;
  for (std::size_t index = 0; index < day_.timeline.works.size(); ++index) {
    const HistoryTimeline::Work& work = day_.timeline.works[index];
    const auto place = std::ranges::find(applications, work.key, &HistorySums::Work::key);
    if (static_cast<std::size_t>(place - applications.begin()) < shown) continue;
    if (!first) first = index;
    others.push_back(work);
  }
  Lane lane{name, "", lengthText(lengthOf(workSpans(others)))};
  for (const Span& span : joined(workSpans(others))) {
    lane.marks += mark("other", span, DayTable::row(day_.id, 'w', first.value_or(0)),
                       name + " worked " + spanText(span));
  }
  return lane;
}

void DayDrawing::addWorks(std::vector<Lane>& lanes) const {
  const auto& applications = day_.sums.works;
  const bool areTooMany = applications.size() > kMostApplications + 1;
  const std::size_t shown = areTooMany ? kMostApplications : applications.size();
  for (std::size_t index = 0; index < shown; ++index) {
    lanes.push_back(works(applications[index]));
    lanes.back().beginsGroup = index == 0;
  }
  if (areTooMany) lanes.push_back(otherWorks(shown));
}

void DayDrawing::addPrevented(std::vector<Lane>& lanes) const {
  const auto& blocks = day_.timeline.blocks;
  const auto& pauses = day_.timeline.pauses;
  if (blocks.empty() && pauses.empty()) return;
  Lane lane{"Blocked or paused", "", ""};
  std::vector<Span> all = pauses;
  for (std::size_t index = 0; index < blocks.size(); ++index) {
    all.push_back(blocks[index].span);
    lane.marks +=
        mark("block", blocks[index].span, DayTable::row(day_.id, 'b', index),
             "Blocked " + spanText(blocks[index].span) + ": " + htmlText(blocks[index].reason));
  }
  for (std::size_t index = 0; index < pauses.size(); ++index) {
    lane.marks += mark("pause", pauses[index], DayTable::row(day_.id, 'p', index),
                       "Paused " + spanText(pauses[index]));
  }
  lane.sum = lengthText(lengthOf(all));
  lanes.push_back(lane);
}

void DayDrawing::addSpans(std::vector<Lane>& lanes, const std::vector<Span>& spans,
                          std::string_view look, char kind, const std::string& name) const {
  if (spans.empty()) return;
  Lane lane{name, "", lengthText(lengthOf(spans))};
  for (std::size_t index = 0; index < spans.size(); ++index) {
    lane.marks +=
        mark(look, spans[index], DayTable::row(day_.id, kind, index),
             name + " " + spanText(spans[index]) + " (" + lengthText(spans[index].length()) + ")");
  }
  lanes.push_back(lane);
}

void DayDrawing::addAskings(std::vector<Lane>& lanes) const {
  const auto& askings = day_.timeline.askings;
  if (askings.empty()) return;
  std::vector<Span> spans;
  Lane lane{"Others asking", "", ""};
  for (std::size_t index = 0; index < askings.size(); ++index) {
    spans.push_back(askings[index].span);
    lane.marks += mark("ask", askings[index].span, DayTable::row(day_.id, 'a', index),
                       htmlText(askings[index].name + askings[index].wordsInBrackets()) +
                           " asked to stay awake " + spanText(askings[index].span));
  }
  lane.sum = lengthText(lengthOf(spans));
  lanes.push_back(lane);
}

std::string DayDrawing::chargePath(bool isArea) const {
  constexpr double kWidth = 1000;
  constexpr int kTop = 2;
  const auto gaps = day_.gaps();
  const auto endOf = [&](WallTime at) {
    const auto gap = std::ranges::find_if(gaps, [at](const Span& each) { return each.from > at; });
    return gap == gaps.end() ? day_.knownUntil() : gap->from;
  };
  const auto point = [&](WallTime at, std::int64_t percentage) {
    const std::int64_t x = std::lround(fraction(at) * kWidth);
    const std::int64_t y = kTop + (100 - std::clamp<std::int64_t>(percentage, 0, 100)) *
                                      (kChargeHeight - 2 * kTop) / 100;
    return std::to_string(x) + " " + std::to_string(y);
  };
  const auto foot = [&](WallTime at) {
    return std::to_string(std::lround(fraction(at) * kWidth)) + " " + std::to_string(kChargeHeight);
  };
  std::string path;
  std::optional<WallTime> end;  // Of the stretch of known time that is being drawn.
  std::int64_t last = 0;
  const auto finish = [&] {
    if (!end) return;
    path += "L" + point(*end, last);
    if (isArea) path += "L" + foot(*end) + "Z";
  };
  for (const HistoryTimeline::Charge& charge : day_.timeline.charges) {
    if (!charge.power.hasBattery) continue;
    if (!end || charge.at > *end) {
      finish();
      end = endOf(charge.at);
      path += isArea ? "M" + foot(charge.at) + "L" : "M";
    } else {
      path += "L";
    }
    last = charge.power.percentage;
    path += point(charge.at, last);
  }
  finish();
  return path;
}

std::string DayDrawing::chargeRow() const {
  std::int64_t least = 100;
  std::int64_t most = 0;
  std::string said;
  std::optional<bool> source;
  for (const HistoryTimeline::Charge& charge : day_.timeline.charges) {
    if (!charge.power.hasBattery) continue;
    least = std::min(least, charge.power.percentage);
    most = std::max(most, charge.power.percentage);
    if (source == charge.power.onAC) continue;
    source = charge.power.onAC;
    said += "; " + std::to_string(charge.power.percentage) + " % " +
            (charge.power.onAC ? "on mains" : "on battery") + " at " + hourAndMinute(charge.at);
  }
  const std::string range =
      (least == most ? "" : std::to_string(least) + " to ") + std::to_string(most) + "\u00a0%";
  const std::string height = std::to_string(kChargeHeight);
  return "<tr role=\"row\"><th scope=\"row\" role=\"rowheader\">Charge</th>"
         "<td class=\"when\" role=\"cell\"><svg" +
         svgAttribute("height", height) + " role=\"img\"" +
         svgAttribute("aria-label", "Charge, " + range + said) + "><use" +
         svgAttribute("href", "#" + day_.id + "g") + "/><svg viewBox=\"0 0 1000 " + height +
         R"(" preserveAspectRatio="none")" + svgAttribute("height", height) +
         "><path class=\"area\"" + svgAttribute("d", chargePath(true)) + "/><path class=\"curve\"" +
         svgAttribute("d", chargePath(false)) +
         R"(/></svg></svg></td><td class="sum" role="cell">)" + range + "</td></tr>\n";
}

std::string DayDrawing::lanes() const {
  std::vector<Lane> lanes{holds()};
  addWorks(lanes);
  const std::size_t begin = lanes.size();
  addAskings(lanes);
  addPrevented(lanes);
  addSpans(lanes, day_.timeline.sleeps, "sleep", 's', "Asleep");
  addSpans(lanes, day_.timeline.lidClosed, "lid", 'l', "Lid closed");
  addSpans(lanes, day_.timeline.onBattery, "batt", 'o', "On battery");
  if (begin < lanes.size()) lanes[begin].beginsGroup = true;
  std::string text =
      "<table class=\"lanes\" role=\"table\" aria-label=\"The day as lanes\"><thead "
      "role=\"rowgroup\"><tr role=\"row\">"
      "<th class=\"what\" scope=\"col\" role=\"columnheader\"><span class=\"hide\">What</span></th>"
      "<th class=\"when\" scope=\"col\" role=\"columnheader\">" +
      hours() +
      "</th><th class=\"sum\" scope=\"col\" role=\"columnheader\"><span class=\"hide\">How long"
      "</span></th></tr></thead><tbody role=\"rowgroup\">\n";
  for (const Lane& lane : lanes)
    text += laneRow(lane);
  if (day_.hasBattery()) text += chargeRow();
  return text + "</tbody></table>\n";
}

std::string DayDrawing::strip() const {
  constexpr int kTop = 3;
  constexpr int kHeight = 14;
  constexpr int kSleepTop = 8;
  constexpr int kSleepHeight = 4;
  std::string text = R"(<svg height="20" aria-hidden="true"><use)" +
                     svgAttribute("href", "#" + day_.id + "g") + "/>";
  for (const Span& sleep : joined(day_.timeline.sleeps))
    text += box("sleep", sleep, kSleepTop, kSleepHeight);
  for (const Span& held : heldSpans(day_.timeline))
    text += box("held", held, kTop, kHeight);
  return text + "</svg>";
}

}  // namespace staylit
