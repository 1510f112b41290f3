#include "Staylit/History/HistoryJson.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "Staylit/History/HistorySums.h"
#include "Staylit/History/HistoryTexts.h"
#include "Staylit/JsonText.h"
#include "Staylit/StatusReport.h"
#include "Staylit/TimeTexts.h"

namespace staylit {
namespace {

using JsonElements = std::vector<std::string>;

std::string_view endingName(HistoryTimeline::Ending ending) {
  switch (ending) {
    case HistoryTimeline::Ending::open:
      return "open";
    case HistoryTimeline::Ending::lost:
      return "lost";
    case HistoryTimeline::Ending::later:
      return "later";
    case HistoryTimeline::Ending::ended:
      break;
  }
  return "ended";
}

std::string jsonSeconds(std::chrono::nanoseconds length) {
  return jsonDecimal(tidewell::Seconds(length).count());
}

JsonObject jsonSpan(const HistoryTimeline::Span& span) {
  return JsonObject()
      .addText("from", inUniversalTime(span.from))
      .addText("to", inUniversalTime(span.to))
      .add("seconds", jsonSeconds(span.length()))
      .addFlag("beganEarlier", span.beganEarlier)
      .addText("ending", endingName(span.ending));
}

template <typename Element, typename Write>
std::string jsonEach(const std::vector<Element>& elements, Write write) {
  JsonElements written;
  std::ranges::transform(elements, std::back_inserter(written), write);
  return jsonList(written);
}

std::string jsonTexts(const std::vector<std::string>& texts) {
  return jsonEach(texts, [](const std::string& text) { return jsonText(text); });
}

std::string jsonSpans(const std::vector<HistoryTimeline::Span>& spans) {
  return jsonEach(spans, [](const auto& span) { return jsonSpan(span).text(); });
}

std::string jsonFigures(const WorkFigures& figures) {
  return JsonObject()
      .add("cpuPercent", jsonDecimal(figures.cpuPercent))
      .add("diskKBps", jsonDecimal(figures.diskKBps))
      .add("netKBps", jsonDecimal(figures.netKBps))
      .text();
}

std::string jsonFigures(const std::optional<WorkFigures>& figures) {
  return figures ? jsonFigures(*figures) : "null";
}

std::string jsonPart(const HistoryTimeline::Hold::Part& part) {
  return JsonObject()
      .addText("from", inUniversalTime(part.from))
      .addText("to", inUniversalTime(part.to))
      .add("seconds", jsonSeconds(part.to - part.from))
      .addText("state", nameOf(part.state))
      .addText("reason", part.reason)
      .add("names", jsonTexts(part.names))
      .add("services", jsonTexts(part.services))
      .text();
}

std::string jsonHold(const HistoryTimeline::Hold& hold) {
  return jsonSpan(hold.span)
      .add("parts", jsonEach(hold.parts, [](const auto& part) { return jsonPart(part); }))
      .text();
}

std::string jsonWork(const HistoryTimeline::Work& work) {
  return jsonSpan(work.span)
      .addText("id", work.key)
      .addText("name", work.display)
      .addText("category", rawValue(work.category))
      .add("overForSecondsBefore", jsonDecimal(work.overForSeconds))
      .add("start", jsonFigures(work.start))
      .add("peak", jsonFigures(work.peak))
      .add("mean", jsonFigures(work.mean))
      .add("onBatterySeconds", jsonSeconds(work.onBattery))
      .text();
}

std::string jsonCharge(const HistoryTimeline::Charge& charge) {
  const tidewell::PowerState& power = charge.power;
  return JsonObject()
      .addText("at", inUniversalTime(charge.at))
      .addFlag("onAC", power.onAC)
      .addFlag("hasBattery", power.hasBattery)
      .add("batteryPercent", power.hasBattery ? std::to_string(power.percentage) : "null")
      .addFlag("lowPowerMode", power.lowPowerMode)
      .text();
}

std::string jsonSetting(const HistoryTimeline::Setting& setting) {
  return JsonObject()
      .addText("at", inUniversalTime(setting.at))
      .addText("key", setting.key)
      .addText("from", setting.from)
      .addText("to", setting.to)
      .text();
}

std::string jsonSums(const HistorySums& sums) {
  return JsonObject()
      .add("heldSeconds", jsonSeconds(sums.held))
      .add("heldOnBatterySeconds", jsonSeconds(sums.heldOnBattery))
      .add("notGrantedSeconds", jsonSeconds(sums.notGranted))
      .add("blockedSeconds", jsonSeconds(sums.blocked))
      .add("pausedSeconds", jsonSeconds(sums.paused))
      .add("asleepSeconds", jsonSeconds(sums.asleep))
      .add("runningSeconds", jsonSeconds(sums.running))
      .add("works", jsonEach(sums.works,
                             [](const auto& work) {
                               return JsonObject()
                                   .addText("id", work.key)
                                   .addText("name", work.display)
                                   .addText("category", rawValue(work.category))
                                   .add("seconds", jsonSeconds(work.length))
                                   .add("onBatterySeconds", jsonSeconds(work.onBattery))
                                   .add("peak", jsonFigures(work.peak))
                                   .text();
                             }))
      .add("askings", jsonEach(sums.askings,
                               [](const auto& asking) {
                                 return JsonObject()
                                     .addText("name", asking.name)
                                     .add("seconds", jsonSeconds(asking.length))
                                     .text();
                               }))
      .text();
}

std::string jsonEvents(const HistoryTimeline& timeline, const History& history) {
  JsonElements events;
  for (const HistoryEvent& event : history.events) {
    if (event.at >= timeline.from && event.at < timeline.to) events.push_back(textOf(event));
  }
  return jsonList(events);
}

}  // namespace

std::string historyJson(const HistoryTimeline& timeline, const History& history) {
  return JsonObject()
      .addNumber("version", kHistoryJsonVersion)
      .addText("from", inUniversalTime(timeline.from))
      .addText("to", inUniversalTime(timeline.to))
      .addFlag("running", history.isRunning)
      .addText("summary", HistoryTexts::summary(timeline, history.now))
      .add("sums", jsonSums(sumsOf(timeline)))
      .add("runs", jsonEach(timeline.runs,
                            [](const auto& run) {
                              return jsonSpan(run.span).addText("version", run.version).text();
                            }))
      .add("holds", jsonEach(timeline.holds, [](const auto& hold) { return jsonHold(hold); }))
      .add("works", jsonEach(timeline.works, [](const auto& work) { return jsonWork(work); }))
      .add("askings", jsonEach(timeline.askings,
                               [](const auto& asking) {
                                 return jsonSpan(asking.span)
                                     .addText("name", asking.name)
                                     .addText("words", asking.words)
                                     .text();
                               }))
      .add("blocks", jsonEach(timeline.blocks,
                              [](const auto& block) {
                                return jsonSpan(block.span).addText("reason", block.reason).text();
                              }))
      .add("pauses", jsonSpans(timeline.pauses))
      .add("sleeps", jsonSpans(timeline.sleeps))
      .add("charges",
           jsonEach(timeline.charges, [](const auto& charge) { return jsonCharge(charge); }))
      .add("onBattery", jsonSpans(timeline.onBattery))
      .add("lidClosed", jsonSpans(timeline.lidClosed))
      .add("lidHolds", jsonSpans(timeline.lidHolds))
      .add("settings",
           jsonEach(timeline.settings, [](const auto& setting) { return jsonSetting(setting); }))
      .add("clockSets",
           jsonEach(timeline.clockSets,
                    [](const auto& set) {
                      return JsonObject().addText("at", inUniversalTime(set.at)).text();
                    }))
      .add("events", jsonEvents(timeline, history))
      .text();
}

}  // namespace staylit
