#include "Staylit/HoldsReport.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iterator>
#include <string_view>

#include "Staylit/JsonText.h"
#include "Staylit/TimeTexts.h"

namespace staylit {
namespace {

using Activity = HoldsReport::Activity;
using Decider = HoldsReport::Decider;
using Effect = HoldsReport::Effect;
using Hold = HoldsReport::Hold;
using Verdict = HoldsReport::Verdict;
using Texts = std::vector<std::string>;
using tidewell::WallTime;

/// "A", "A and B", "A, B and C"
std::string enumeration(const Texts& texts) {
  std::string result;
  for (std::size_t index = 0; index < texts.size(); ++index) {
    const bool isLast = index + 1 == texts.size();
    if (index > 0) result += isLast ? " and " : ", ";
    result += texts[index];
  }
  return result;
}

/// As Staylit calls itself where it takes a hold.
constexpr std::string_view kStaylit = "Staylit";

bool heeds(const Decider& decider, const Hold& hold) {
  switch (hold.effect) {
    case Effect::everySleep:
      return true;
    case Effect::lidSleep:
      return false;
    case Effect::idleSleep:
    case Effect::idleness:
      break;
  }
  if (decider.isKeptOff && hold.owner == kStaylit) return true;
  return std::ranges::find(decider.heeds, hold.service) != decider.heeds.end();
}

bool isHeld(const Decider& decider, const std::vector<Hold>& holds) {
  return std::ranges::any_of(holds, [&](const Hold& hold) { return heeds(decider, hold); });
}

/// Those who may put the machine to sleep, as far as is known.
std::vector<const Decider*> thoseWhoMay(const HoldsReport& report) {
  std::vector<const Decider*> result;
  for (const Decider& decider : report.deciders) {
    if (decider.action != Decider::Action::nothing) result.push_back(&decider);
  }
  return result;
}

std::vector<const Decider*> withoutHold(const HoldsReport& report, Decider::Action action) {
  std::vector<const Decider*> result;
  for (const Decider* decider : thoseWhoMay(report)) {
    if (decider->action == action && !isHeld(*decider, report.holds)) result.push_back(decider);
  }
  return result;
}

/// A time that somebody has set: "30 min", and not "30 min 0 s".
std::string settingOf(tidewell::Seconds length) {
  const std::string text = lengthOfTime(length);
  const std::size_t second = text.find(" 0 ");
  return text.substr(0, second);
}

std::string inParentheses(const Decider& decider) {
  return decider.setting.empty() ? "" : " (" + decider.setting + ")";
}

/// Who keeps those from it who may put the machine to sleep: "mpv holds".
std::string holders(const HoldsReport& report) {
  Texts names;
  for (const Hold& hold : report.holds) {
    const auto isHeeded = [&hold](const Decider* decider) { return heeds(*decider, hold); };
    if (!std::ranges::any_of(thoseWhoMay(report), isHeeded)) continue;
    const std::string name = hold.owner.empty() ? "somebody" : hold.owner;
    if (std::ranges::find(names, name) == names.end()) names.push_back(name);
  }
  constexpr std::size_t kMostNames = 3;
  const std::size_t more = names.size() > kMostNames ? names.size() - kMostNames : 0;
  names.resize(names.size() - more);
  if (more > 0) names.push_back(std::to_string(more) + " more");
  return enumeration(names) + (names.size() == 1 ? " holds" : " hold");
}

std::string whoElseWould(const HoldsReport& report) {
  Texts texts;
  for (const Decider* decider : thoseWhoMay(report)) {
    const bool isKnown = decider->action == Decider::Action::sleeps;
    std::string text = decider->name;
    text += isKnown ? " would" : ", whose settings cannot be read here, might";
    if (isKnown && decider->after) text += " after " + settingOf(*decider->after);
    texts.push_back(text + inParentheses(*decider));
  }
  return enumeration(texts);
}

std::string neverSentence(const HoldsReport& report) {
  if (report.canSleep == false) {
    return "This machine does not go to sleep: logind says that it cannot be suspended.";
  }
  Texts texts;
  for (const Decider& decider : report.deciders)
    texts.push_back(decider.name + " does not put it to sleep" + inParentheses(decider));
  return "This machine does not go to sleep by itself, held or not: " + enumeration(texts) + ".";
}

std::string heldSentence(const HoldsReport& report) {
  return "This machine would not go to sleep now: " + holders(report) + " it awake; else " +
         whoElseWould(report) + ".";
}

std::string sleepsSentence(const HoldsReport& report) {
  const Decider& decider = *withoutHold(report, Decider::Action::sleeps).front();
  std::string sentence = "This machine would go to sleep";
  if (decider.after) sentence += " after " + settingOf(*decider.after) + " without use";
  sentence += ": " + decider.name + " does that" + inParentheses(decider);
  return sentence + (report.holds.empty() ? ", and nothing holds it awake."
                                          : ", and heeds none of the holds.");
}

std::string unknownSentence(const HoldsReport& report) {
  const std::string begin = "Whether this machine would go to sleep now cannot be told: ";
  const auto open = withoutHold(report, Decider::Action::unknown);
  if (open.empty() && !report.silent.empty()) {
    const bool isOne = report.silent.size() == 1;
    return begin + enumeration(report.silent) +
           (isOne ? " does not answer; restart it." : " do not answer; restart them.");
  }
  if (open.empty()) return begin + "neither logind nor a desktop's power management answers.";
  Texts names;
  for (const Decider* decider : open)
    names.push_back(decider->name);
  return begin + "the settings of " + enumeration(names) + " cannot be read here" +
         (report.holds.empty() ? ", and nothing holds it awake." : ", and no hold binds it.");
}

std::string_view nameOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::sleeps:
      return "sleeps";
    case Verdict::held:
      return "held";
    case Verdict::never:
      return "never";
    case Verdict::unknown:
      break;
  }
  return "unknown";
}

std::string_view describe(Effect effect) {
  switch (effect) {
    case Effect::everySleep:
      return "every sleep";
    case Effect::lidSleep:
      return "sleep by the lid";
    case Effect::idleness:
      return "idleness, and the sleep that follows it";
    case Effect::idleSleep:
      break;
  }
  return "sleep of the unused machine";
}

std::string_view nameOf(Effect effect) {
  switch (effect) {
    case Effect::everySleep:
      return "every-sleep";
    case Effect::lidSleep:
      return "lid-sleep";
    case Effect::idleness:
      return "idleness";
    case Effect::idleSleep:
      break;
  }
  return "idle-sleep";
}

std::string_view nameOf(Activity::State state) {
  switch (state) {
    case Activity::State::gone:
      return "gone";
    case Activity::State::quiet:
      return "quiet";
    case Activity::State::active:
      return "active";
    case Activity::State::passesOn:
      return "passes-on";
    case Activity::State::unknown:
      break;
  }
  return "unknown";
}

std::string_view nameOf(Decider::Action action) {
  switch (action) {
    case Decider::Action::nothing:
      return "nothing";
    case Decider::Action::sleeps:
      return "sleeps";
    case Decider::Action::unknown:
      break;
  }
  return "unknown";
}

/// Programs at work rest for some seconds now and then.
constexpr tidewell::Seconds kDoubtfulQuiet{10};

/// Whether somebody may want to look whether the hold is still meant.
bool isDoubtful(const Hold& hold) {
  const Activity& activity = hold.activity;
  const bool isQuiet = activity.state == Activity::State::quiet &&
                       activity.quietFor.value_or(kDoubtfulQuiet) >= kDoubtfulQuiet;
  return (activity.state == Activity::State::gone || isQuiet) && hold.staylitSees.empty();
}

std::string activityOf(const Hold& hold) {
  const Activity& activity = hold.activity;
  switch (activity.state) {
    case Activity::State::gone:
      return "its process is gone";
    case Activity::State::quiet:
      return activity.quietFor ? "quiet for " + lengthOfTime(*activity.quietFor)
                               : "quiet as long as it was watched";
    case Activity::State::active:
      return activity.cpuPercent < 1 ? "less than 1% CPU"
                                     : std::to_string(std::lround(activity.cpuPercent)) + "% CPU";
    case Activity::State::passesOn:
      return "passes on what others ask, and does not tell who";
    case Activity::State::unknown:
      break;
  }
  return hold.processIdentifier ? "unknown, for its process cannot be seen from here"
                                : "unknown, for the service does not tell its process";
}

std::string ownerOf(const Hold& hold) {
  std::string text;
  if (hold.processIdentifier) {
    text = "process " + std::to_string(*hold.processIdentifier);
    if (!hold.program.empty()) text += " (" + hold.program + ")";
  } else {
    text = "a process that the service does not tell";
  }
  return hold.user.empty() ? text : text + " of " + hold.user;
}

std::string sinceOf(const Hold& hold, WallTime now) {
  if (!hold.since) return "seen now; nobody tells since when";
  return timeOfDay(*hold.since) + " (" + lengthOfTime(now - *hold.since) + ")";
}

void addHold(Texts& lines, const Hold& hold, WallTime now) {
  std::string title = isDoubtful(hold) ? "! " : "  ";
  title += hold.owner.empty() ? "somebody" : hold.owner;
  if (!hold.reason.empty()) title += " — " + hold.reason;
  lines.push_back(std::move(title));
  lines.push_back("    Keeps off:  " + std::string(describe(hold.effect)));
  lines.push_back("    Held by:    " + hold.service);
  lines.push_back("    Owner:      " + ownerOf(hold));
  lines.push_back("    Since:      " + sinceOf(hold, now));
  lines.push_back("    It does:    " + activityOf(hold));
  if (!hold.staylitSees.empty()) lines.push_back("    To Staylit: " + hold.staylitSees);
}

std::string jsonOfTime(const std::optional<WallTime>& time) {
  return time ? jsonText(inUniversalTime(*time)) : "null";
}

std::string jsonOfLength(const std::optional<tidewell::Seconds>& length) {
  return length ? jsonDecimal(length->count()) : "null";
}

std::string jsonOfTexts(const Texts& texts) {
  Texts written;
  std::ranges::transform(texts, std::back_inserter(written),
                         [](const std::string& text) { return jsonText(text); });
  return jsonList(written);
}

std::string jsonOf(const Hold& hold) {
  const bool isActive = hold.activity.state == Activity::State::active;
  return JsonObject()
      .addText("owner", hold.owner)
      .addText("reason", hold.reason)
      .addText("service", hold.service)
      .addText("keepsOff", nameOf(hold.effect))
      .add("user", hold.user.empty() ? "null" : jsonText(hold.user))
      .add("process", hold.processIdentifier ? std::to_string(*hold.processIdentifier) : "null")
      .add("program", hold.program.empty() ? "null" : jsonText(hold.program))
      .add("since", jsonOfTime(hold.since))
      .addText("does", nameOf(hold.activity.state))
      .add("cpuPercent", isActive ? jsonDecimal(hold.activity.cpuPercent) : "null")
      .add("quietForSeconds", jsonOfLength(hold.activity.quietFor))
      .add("staylitSees", hold.staylitSees.empty() ? "null" : jsonText(hold.staylitSees))
      .text();
}

std::string jsonOf(const Decider& decider) {
  return JsonObject()
      .addText("name", decider.name)
      .addText("does", nameOf(decider.action))
      .add("afterSeconds", jsonOfLength(decider.after))
      .addText("setting", decider.setting)
      .add("heeds", jsonOfTexts(decider.heeds))
      .text();
}

template <typename Element>
std::string jsonOfEach(const std::vector<Element>& elements) {
  Texts written;
  std::ranges::transform(elements, std::back_inserter(written),
                         [](const Element& element) { return jsonOf(element); });
  return jsonList(written);
}

}  // namespace

Verdict HoldsReport::verdict() const {
  if (canSleep == false) return Verdict::never;
  if (deciders.empty()) return Verdict::unknown;
  if (thoseWhoMay(*this).empty()) return Verdict::never;
  if (!withoutHold(*this, Decider::Action::sleeps).empty()) return Verdict::sleeps;
  if (!withoutHold(*this, Decider::Action::unknown).empty()) return Verdict::unknown;
  return Verdict::held;
}

std::string HoldsReport::summary() const {
  switch (verdict()) {
    case Verdict::sleeps:
      return sleepsSentence(*this);
    case Verdict::held:
      return heldSentence(*this);
    case Verdict::never:
      return neverSentence(*this);
    case Verdict::unknown:
      break;
  }
  return unknownSentence(*this);
}

Texts HoldsReport::lines(WallTime now) const {
  Texts lines{summary(), ""};
  lines.push_back("Holds (" + std::to_string(holds.size()) + "):");
  if (holds.empty()) lines.emplace_back("  none");
  for (const Hold& hold : holds)
    addHold(lines, hold, now);
  const bool isAnyDoubtful =
      std::ranges::any_of(holds, [](const Hold& hold) { return isDoubtful(hold); });
  if (isAnyDoubtful) {
    lines.emplace_back();
    lines.emplace_back("! The owner is gone or quiet: the hold may be a forgotten one.");
  }
  return lines;
}

std::string HoldsReport::json(WallTime now) const {
  return JsonObject()
      .addNumber("version", kJsonVersion)
      .addText("time", inUniversalTime(now))
      .addText("verdict", nameOf(verdict()))
      .addText("summary", summary())
      .add("canSleep", canSleep ? (*canSleep ? "true" : "false") : "null")
      .add("holds", jsonOfEach(holds))
      .add("deciders", jsonOfEach(deciders))
      .add("services", jsonOfTexts(services))
      .add("silentServices", jsonOfTexts(silent))
      .text();
}

}  // namespace staylit
