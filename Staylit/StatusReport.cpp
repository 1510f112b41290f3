#include "Staylit/StatusReport.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <iterator>
#include <utility>

#include "Staylit/JsonText.h"
#include "Staylit/StatusTexts.h"
#include "Staylit/TimeTexts.h"

namespace staylit {

using tidewell::BusyApp;
using tidewell::Seconds;
using tidewell::WallTime;

namespace {

using State = StatusReport::State;
using Lines = std::vector<std::string>;

constexpr std::array<std::pair<State, std::string_view>, 5> kStates = {{{State::holding, "holding"},
                                                                        {State::winding, "winding"},
                                                                        {State::blocked, "blocked"},
                                                                        {State::idle, "idle"},
                                                                        {State::paused, "paused"}}};

bool hasTheSame(const Lines& left, const Lines& right) {
  return left.size() == right.size() &&
         std::is_permutation(left.begin(), left.end(), right.begin());
}

bool hasTheSame(const std::vector<StatusReport::Service>& left,
                const std::vector<StatusReport::Service>& right) {
  return std::ranges::equal(left, right, {}, &StatusReport::Service::name,
                            &StatusReport::Service::name);
}

std::string heldBy(const StatusReport::Service& service) {
  const std::string seen = service.seenAt ? "read back at " + timeOfDay(*service.seenAt)
                                          : std::string("not read back yet");
  return service.name + " (" + seen + ")";
}

void addHolders(Lines& lines, const StatusReport& report) {
  const char* label = "Held by:    ";
  for (const StatusReport::Service& service : report.services) {
    lines.push_back(label + heldBy(service));
    label = "            ";
  }
  if (report.wantsHold() && !report.isHeld()) {
    lines.push_back(std::string(label) + "nobody. " + kNothingGrantsTheHold);
  }
}

void addSection(Lines& lines, const std::string& title, const Lines& rows) {
  if (rows.empty()) return;
  lines.emplace_back();
  lines.push_back(title + " (" + std::to_string(rows.size()) + "):");
  for (const std::string& row : rows)
    lines.push_back("  " + row);
}

std::int64_t secondsOver(const BusyApp& app) {
  constexpr double kLongestRun = 1e15;
  return app.busyFor > 0 ? static_cast<std::int64_t>(std::min(app.busyFor, kLongestRun)) : 0;
}

Lines busyRows(const std::vector<BusyApp>& busy) {
  Lines rows;
  for (const BusyApp& app : busy)
    rows.push_back(rowOf(app) + ", for " + lengthOfTime(Seconds(app.busyFor)));
  return rows;
}

Lines candidateRows(const std::vector<BusyApp>& candidates, std::int64_t sustainSeconds) {
  Lines rows;
  for (const BusyApp& app : candidates) {
    rows.push_back(rowOf(app) + ", over for " + std::to_string(secondsOver(app)) + " of " +
                   std::to_string(sustainSeconds) + " s");
  }
  return rows;
}

Lines askingRows(const Lines& asking, const std::vector<tidewell::AskingProgram>& words) {
  Lines rows;
  for (const std::string& name : asking) {
    const auto own = std::ranges::find(words, name, &tidewell::AskingProgram::name);
    rows.push_back(own == words.end() ? name : name + " (" + own->words + ")");
  }
  return rows;
}

std::string jsonOf(const tidewell::AskingProgram& program) {
  return JsonObject().addText("name", program.name).addText("words", program.words).text();
}

std::string jsonOf(const std::optional<WallTime>& time) {
  return time ? jsonText(inUniversalTime(*time)) : "null";
}

std::string jsonOf(const StatusReport::Service& service) {
  return JsonObject().addText("name", service.name).add("seenAt", jsonOf(service.seenAt)).text();
}

JsonObject figures(const BusyApp& app) {
  return JsonObject()
      .addText("id", app.id)
      .addText("name", app.display)
      .addText("doing", app.reason())
      .add("cpuPercent", jsonDecimal(app.cpuPercent))
      .add("diskKBps", jsonDecimal(app.diskKBps))
      .add("netKBps", jsonDecimal(app.netKBps));
}

std::string jsonOf(const tidewell::PowerState& power) {
  return JsonObject()
      .addFlag("onAC", power.onAC)
      .addFlag("hasBattery", power.hasBattery)
      .add("batteryPercent", power.hasBattery ? std::to_string(power.percentage) : "null")
      .addFlag("lowPowerMode", power.lowPowerMode)
      .text();
}

template <typename Element, typename Write>
std::string jsonOfEach(const std::vector<Element>& elements, Write write) {
  Lines written;
  std::ranges::transform(elements, std::back_inserter(written), write);
  return jsonList(written);
}

}  // namespace

std::string_view nameOf(State state) {
  return std::ranges::find(kStates, state, &std::pair<State, std::string_view>::first)->second;
}

std::optional<State> stateNamed(std::string_view name) {
  const auto* found = std::ranges::find(kStates, name, &std::pair<State, std::string_view>::second);
  if (found == kStates.end()) return std::nullopt;
  return found->first;
}

bool StatusReport::saysTheSameAs(const StatusReport& later) const {
  return state == later.state && reason == later.reason && hasTheSame(names, later.names) &&
         hasTheSame(services, later.services) && power.onAC == later.power.onAC &&
         power.hasBattery == later.power.hasBattery &&
         power.lowPowerMode == later.power.lowPowerMode;
}

Lines StatusReport::lines(WallTime now) const {
  Lines lines{summary,
              "Since:      " + timeOfDay(since, now) + " (" + lengthOfTime(now - since) + ")"};
  if (resumesAt) lines.push_back("Until:      " + timeOfDay(*resumesAt, now));
  if (!reason.empty()) lines.push_back("Reason:     " + reason);
  addHolders(lines, *this);
  if (servesMachine) lines.emplace_back("Serves:     the whole machine");
  lines.push_back("Power:      " + describe(power));
  const bool isPast = state == State::paused;
  const std::string past = isPast ? ", before the pause" : "";
  addSection(lines, (state == State::holding ? kStayingAwakeFor : "At work") + past,
             busyRows(busy));
  addSection(lines, "Over a threshold, not for long enough yet" + past,
             candidateRows(candidates, sustainSeconds));
  addSection(lines, kAskedToStayAwake + past, askingRows(asking, askingWords));
  return lines;
}

std::string StatusReport::line() const {
  std::string line = summary;
  if (state == State::holding) line += whatWorks(busy, asking);
  if (wantsHold() && !isHeld()) line += std::string("  |  ") + kNothingGrantsTheHold;
  return line;
}

std::string StatusReport::json(WallTime now) const {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(now - since);
  return JsonObject()
      .addNumber("version", kJsonVersion)
      .addText("state", nameOf(state))
      .addFlag("held", isHeld())
      .addText("summary", summary)
      .addText("since", inUniversalTime(since))
      .addNumber("forSeconds", std::max<std::int64_t>(0, seconds.count()))
      .addText("reason", reason)
      .add("releasesInSeconds", state == State::winding ? std::to_string(releasesIn) : "null")
      .add("resumesAt", jsonOf(resumesAt))
      .add("names", jsonOfEach(names, [](const auto& name) { return jsonText(name); }))
      .add("services", jsonOfEach(services, [](const auto& each) { return jsonOf(each); }))
      .add("busy",
           jsonOfEach(busy,
                      [](const BusyApp& app) {
                        return figures(app).add("busyForSeconds", jsonDecimal(app.busyFor)).text();
                      }))
      .add("candidates", jsonOfEach(candidates,
                                    [this](const BusyApp& app) {
                                      return figures(app)
                                          .add("overForSeconds", jsonDecimal(app.busyFor))
                                          .addNumber("neededSeconds", sustainSeconds)
                                          .text();
                                    }))
      .add("asking", jsonOfEach(asking, [](const auto& name) { return jsonText(name); }))
      .add("askingWords", jsonOfEach(askingWords, [](const auto& each) { return jsonOf(each); }))
      .addText("serves", servesMachine ? "machine" : "session")
      .add("power", jsonOf(power))
      .text();
}

}  // namespace staylit
