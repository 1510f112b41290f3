#include "Staylit/History/DayTable.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "Staylit/History/HtmlText.h"
#include "Staylit/History/LocalTimes.h"
#include "Staylit/History/PageTexts.h"
#include "Tidewell/BusyApp.h"

namespace staylit {

using Span = HistoryTimeline::Span;
using tidewell::WallTime;

namespace {

/// In HTML.
struct TableLine {
  WallTime at;
  std::string id;
  std::string when;
  std::string what;
  std::string length;
};

std::string shownFigures(const WorkFigures& figures) {
  tidewell::BusyApp app;
  app.cpuPercent = figures.cpuPercent;
  app.diskKBps = figures.diskKBps;
  app.netKBps = figures.netKBps;
  return app.reason();
}

std::string figuresInWords(const HistoryTimeline::Work& work, const std::string& between) {
  std::string text = "at the start " + shownFigures(work.start);
  if (work.peak) text += between + "at most " + shownFigures(*work.peak);
  if (work.mean) text += between + "on average " + shownFigures(*work.mean);
  return text;
}

std::string endingRemark(const Span& span) {
  using Ending = HistoryTimeline::Ending;
  std::string text;
  if (span.beganEarlier) text += ", from the day before";
  if (span.ending == Ending::later) text += ", into the next day";
  if (span.ending == Ending::open) text += ", and goes on";
  if (span.ending == Ending::lost) text += ", until Staylit ended without a word";
  return text.empty() ? "" : "<span class=\"s\">" + text.substr(1) + "</span>";
}

class TableLines {
 public:
  explicit TableLines(const PageDay& day) : day_(day) {}

  void addSpan(char kind, std::size_t index, const Span& span, const std::string& what) {
    lines_.push_back({span.from, DayTable::row(day_.id, kind, index), spanText(span),
                      what + endingRemark(span), lengthText(span.length())});
  }

  void addPoint(WallTime at, const std::string& what) {
    lines_.push_back({at, "", hourAndMinute(at), what, ""});
  }

  std::vector<TableLine> inOrder() && {
    std::ranges::stable_sort(lines_, {}, &TableLine::at);
    return std::move(lines_);
  }

 private:
  const PageDay& day_;
  std::vector<TableLine> lines_;
};

std::string namesInHtml(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names)
    text += (text.empty() ? "" : ", ") + htmlName(name);
  return text;
}

std::string holdInWords(const HistoryTimeline::Hold& hold) {
  std::string text;
  std::string_view last;
  const std::vector<std::string>* services = nullptr;
  for (const HistoryTimeline::Hold::Part& part : hold.parts) {
    if (part.reason != last) {
      const bool isFirst = text.empty();
      text += isFirst ? "Held: " : "; from " + hourAndMinute(part.from) + " ";
      text += htmlText(part.reason);
      last = part.reason;
    }
    if (part.isGranted()) services = &part.services;
  }
  if (!services) return text + ". <span class=\"s\">No service granted it.</span>";
  return text + ". <span class=\"s\">Granted by " + namesInHtml(*services) + ".</span>";
}

void addHoldLines(TableLines& lines, const HistoryTimeline& timeline) {
  for (std::size_t index = 0; index < timeline.holds.size(); ++index)
    lines.addSpan('h', index, timeline.holds[index].span, holdInWords(timeline.holds[index]));
}

void addWorkLines(TableLines& lines, const HistoryTimeline& timeline) {
  for (std::size_t index = 0; index < timeline.works.size(); ++index) {
    const HistoryTimeline::Work& work = timeline.works[index];
    std::string text = htmlName(work.display) + " worked: <span class=\"s\">" +
                       figuresInWords(work, ", ") + ".</span> ";
    if (work.onBattery.count() > 0) {
      text += "<span class=\"s\">Of it " + lengthText(work.onBattery) + " on battery.</span> ";
    }
    lines.addSpan('w', index, work.span, text);
  }
}

void addSpanLines(TableLines& lines, const std::vector<Span>& spans, char kind,
                  const std::string& what) {
  for (std::size_t index = 0; index < spans.size(); ++index)
    lines.addSpan(kind, index, spans[index], what);
}

void addOtherLines(TableLines& lines, const HistoryTimeline& timeline) {
  for (std::size_t index = 0; index < timeline.askings.size(); ++index) {
    const HistoryTimeline::Asking& asking = timeline.askings[index];
    lines.addSpan(
        'a', index, asking.span,
        htmlName(asking.name) + htmlText(asking.wordsInBrackets()) + " asked to stay awake");
  }
  for (std::size_t index = 0; index < timeline.blocks.size(); ++index) {
    const HistoryTimeline::Block& block = timeline.blocks[index];
    lines.addSpan('b', index, block.span, "Blocked: " + htmlText(block.reason));
  }
  addSpanLines(lines, timeline.pauses, 'p', "Paused");
  addSpanLines(lines, timeline.sleeps, 's', "Asleep");
  addSpanLines(lines, timeline.lidClosed, 'l', "Lid closed");
  addSpanLines(lines, timeline.lidHolds, 'k', "Kept working with the lid closed");
}

void addPointLines(TableLines& lines, const HistoryTimeline& timeline) {
  for (const HistoryTimeline::Run& run : timeline.runs) {
    if (!run.span.beganEarlier) {
      lines.addPoint(run.span.from, "Staylit " + htmlText(run.version) + " started");
    }
    if (run.span.ending == HistoryTimeline::Ending::ended) {
      lines.addPoint(run.span.to, "Staylit ended");
    } else if (run.span.ending == HistoryTimeline::Ending::lost) {
      lines.addPoint(run.span.to, "Staylit was last seen; it ended without a word");
    }
  }
  for (const HistoryTimeline::Setting& setting : timeline.settings) {
    lines.addPoint(setting.at, "The setting " + htmlName(setting.key) + " became " +
                                   htmlName(setting.to) + ". <span class=\"s\">It was " +
                                   htmlName(setting.from) + ".</span>");
  }
  for (const HistoryTimeline::ClockSet& set : timeline.clockSets)
    lines.addPoint(set.at, "The clock was set");
}

/// The charge that was known last at `at`; absent where there is none.
std::optional<std::int64_t> percentageAt(const HistoryTimeline& timeline, WallTime at) {
  std::optional<std::int64_t> percentage;
  for (const HistoryTimeline::Charge& charge : timeline.charges) {
    if (charge.at > at) break;
    if (charge.power.hasBattery) percentage = charge.power.percentage;
  }
  return percentage;
}

void addBatteryLines(TableLines& lines, const HistoryTimeline& timeline) {
  for (std::size_t index = 0; index < timeline.onBattery.size(); ++index) {
    const Span& span = timeline.onBattery[index];
    std::string text = "On battery ";
    const auto first = percentageAt(timeline, span.from);
    const auto last = percentageAt(timeline, span.to);
    if (first && last) {
      text += "<span class=\"s\">from " + std::to_string(*first) + " to " + std::to_string(*last) +
              "\u00a0%.</span> ";
    }
    lines.addSpan('o', index, span, text);
  }
}

}  // namespace

std::string DayTable::row(const std::string& day, char kind, std::size_t index) {
  return day + kind + std::to_string(index);
}

std::string DayTable::saidOf(const HistoryTimeline::Work& work) {
  std::string text = htmlText(work.display) + " worked " + spanText(work.span) + " (" +
                     lengthText(work.span.length()) + ")\n" + figuresInWords(work, "\n");
  if (work.onBattery.count() > 0) text += "\n" + lengthText(work.onBattery) + " on battery";
  return text;
}

std::string DayTable::of(const PageDay& day) {
  TableLines lines(day);
  addHoldLines(lines, day.timeline);
  addWorkLines(lines, day.timeline);
  addOtherLines(lines, day.timeline);
  addPointLines(lines, day.timeline);
  addBatteryLines(lines, day.timeline);
  std::string text =
      "<table class=\"log\" aria-label=\"Line by line\"><thead><tr><th scope=\"col\">Time</th><th "
      "scope=\"col\">What</th>"
      "<th class=\"n\" scope=\"col\">How long</th></tr></thead><tbody>\n";
  for (const TableLine& line : std::move(lines).inOrder()) {
    text += "<tr" + (line.id.empty() ? "" : " id=\"" + line.id + "\"") + "><td>" + line.when +
            "</td><td>" + line.what + "</td><td class=\"n\">" + line.length + "</td></tr>\n";
  }
  return text + "</tbody></table>\n";
}

}  // namespace staylit
